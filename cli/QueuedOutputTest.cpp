#include "cli/QueuedOutput.h"

#include "cli/testing/FakeOutput.h"

#include <gmock/gmock.h>

#include <atomic>
#include <chrono>
#include <future>

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using namespace std::chrono_literals;

/// A terminal that stands still until it is let go on.
class StuckOutput : public FakeOutput {
public:
    void print(std::string_view line) override
    {
        m_goesOn.wait();
        FakeOutput::print(line);
    }

    void goOn() { m_gate.set_value(); }

private:
    std::promise<void> m_gate;
    std::shared_future<void> m_goesOn = m_gate.get_future().share();
};

TEST(QueuedOutputTest, PrintsEverythingInOrderBeforeItGoes)
{
    FakeOutput inner;
    {
        QueuedOutput output(inner);
        output.print("a");
        output.complain("b");
        output.printCheck(Mark::warn, "c");
        output.showProgress("d");
        output.print("e");
    }
    EXPECT_THAT(inner.lines, ElementsAre("out a", "err b", "warn c", "progress d", "out e"));
}

TEST(QueuedOutputTest, FlushWaitsUntilAllIsPrinted)
{
    FakeOutput inner;
    QueuedOutput output(inner);
    for (int i = 0; i < 100; ++i)
        output.print("line");
    output.flush();
    EXPECT_EQ(inner.lines.size(), 100U);
    output.flush();
}

TEST(QueuedOutputTest, TerminalThatStandsStillHoldsNobodyUp)
{
    StuckOutput inner;
    {
        QueuedOutput output(inner);
        for (int i = 0; i < 1000; ++i)
            output.print("line");
        EXPECT_THAT(inner.lines, IsEmpty());
        inner.goOn();
    }
    EXPECT_EQ(inner.lines.size(), 1000U);
}

TEST(QueuedOutputTest, PrintingWaitsWhenTooMuchIsWaitingAndLosesNothing)
{
    StuckOutput inner;
    {
        QueuedOutput output(inner, 10'000);
        std::atomic<int> printed = 0;
        std::thread printer([&] {
            for (; printed < 20; ++printed)
                output.print(std::string(1000, 'x'));
        });
        while (printed < 8)
            std::this_thread::yield();
        std::this_thread::sleep_for(20ms);
        EXPECT_EQ(printed, 8) << "the ninth would be more than 10,000 bytes";
        inner.goOn();
        printer.join();
    }
    EXPECT_EQ(inner.lines.size(), 20U);
}

TEST(QueuedOutputTest, WidthIsThatOfTheOutputBehind)
{
    FakeOutput inner;
    inner.width = 61;
    EXPECT_EQ(QueuedOutput(inner).progressWidth(), 61U);
}

} // namespace companion::cli::testing
