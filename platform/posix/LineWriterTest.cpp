#include "platform/posix/LineWriter.h"

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::EndsWith;
using ::testing::StartsWith;

/// A destination that takes nothing until it is told to.
struct HungDestination {
    std::promise<void> entered;
    std::promise<void> resume;
    bool hasHung = false;
    std::string taken;

    static LineWriter::Sink sink(std::shared_ptr<HungDestination> self)
    {
        return [self = std::move(self)](std::string_view lines) {
            if (!std::exchange(self->hasHung, true)) {
                self->entered.set_value();
                self->resume.get_future().wait();
            }
            self->taken += lines;
        };
    }
};

LineWriter::Sink appendTo(const std::shared_ptr<std::string>& text)
{
    return [text](std::string_view lines) { *text += lines; };
}

TEST(LineWriterTest, LinesOfOneThreadAreWrittenInOrderBeforeTheWriterIsDestroyed)
{
    std::string expected;
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer(appendTo(text));
        for (int i = 0; i < 1000; ++i) {
            writer.write("line " + std::to_string(i));
            expected += "line " + std::to_string(i) + "\n";
        }
    }
    EXPECT_EQ(*text, expected);
}

TEST(LineWriterTest, FourThreadsDoNotBreakEachOthersLines)
{
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer(appendTo(text));
        std::vector<std::jthread> threads;
        for (const char letter : {'a', 'b', 'c', 'd'}) {
            threads.emplace_back([&writer, letter] {
                for (int i = 0; i < 500; ++i)
                    writer.write(std::string(20, letter));
            });
        }
    }
    EXPECT_EQ(text->size(), 4u * 500u * 21u);
    for (std::size_t at = 0; at + 21 <= text->size(); at += 21)
        EXPECT_EQ(text->substr(at, 21), std::string(20, (*text)[at]) + "\n");
}

TEST(LineWriterTest, ALineBreakIsEscapedAndALineOf8193BytesIsCut)
{
    const auto text = std::make_shared<std::string>();
    {
        LineWriter writer(appendTo(text));
        writer.write("one\ntwo\x1b[2J");
        writer.write(std::string(8192, 'x'));
        writer.write(std::string(8193, 'y'));
    }
    EXPECT_EQ(
        *text, "one\\ntwo\\x1b[2J\n" + std::string(8192, 'x') + "\n" + std::string(8192, 'y') + "...\n");
}

TEST(LineWriterTest, EachOf1000LinesIsWrittenByAnotherThreadWithoutWaitingForTheNext)
{
    std::atomic<int> written = 0;
    std::thread::id thread;
    LineWriter writer([&](std::string_view) {
        thread = std::this_thread::get_id();
        ++written;
        written.notify_one();
    });
    for (int i = 0; i < 1000; ++i) {
        writer.write("Pinging...");
        written.wait(i);
    }
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST(LineWriterTest, AHungDestinationBlocksNobodyAndBeyond256KiBLinesAreDroppedAndCounted)
{
    const auto destination = std::make_shared<HungDestination>();
    {
        LineWriter writer(HungDestination::sink(destination));
        writer.write("first");
        destination->entered.get_future().wait();
        for (int i = 0; i < 300; ++i)
            writer.write(std::string(1023, 'x'));
        destination->resume.set_value();
    }
    EXPECT_THAT(destination->taken, StartsWith("first\nxxx"));
    EXPECT_THAT(destination->taken, EndsWith("x\n(44 lines lost)\n"));
    EXPECT_EQ(destination->taken.size(), 6 + 256 * 1024 + std::string("(44 lines lost)\n").size());
}

TEST(LineWriterTest, AfterADropTheNextLinesAreWrittenAgain)
{
    const auto destination = std::make_shared<HungDestination>();
    std::promise<void> caughtUp;
    {
        LineWriter writer([&, sink = HungDestination::sink(destination)](std::string_view lines) {
            sink(lines);
            if (lines.find("lost") != lines.npos)
                caughtUp.set_value();
        });
        writer.write("first");
        destination->entered.get_future().wait();
        for (int i = 0; i < 257; ++i)
            writer.write(std::string(1023, 'x'));
        destination->resume.set_value();
        caughtUp.get_future().wait();
        writer.write("last");
    }
    EXPECT_THAT(destination->taken, EndsWith("x\n(1 lines lost)\nlast\n"));
}

TEST(LineWriterTest, TheDestructorDoesNotWaitForAHungDestination)
{
    const auto destination = std::make_shared<HungDestination>();
    const auto start = std::chrono::steady_clock::now();
    {
        LineWriter writer(HungDestination::sink(destination));
        writer.write("first");
        destination->entered.get_future().wait();
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, 10s);
    destination->resume.set_value();
}

} // namespace
} // namespace companion::testing
