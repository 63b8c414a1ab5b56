#include "platform/qt/QtMainQueue.h"
#include "tests/qt/EventLoop.h"

#include <algorithm>
#include <optional>

#include <gmock/gmock.h>

namespace companion::testing {
namespace {

using ::testing::Each;
using ::testing::Ge;
using ::testing::Lt;
using ::testing::SizeIs;

constexpr auto interval = 40ms;

class TrackingMainQueue : public QtMainQueue {
public:
    bool isMenuOpen = false;

protected:
    bool isTracking() const override { return isMenuOpen; }
};

class QtRepeatingTimerTest : public ::testing::Test {
protected:
    void startTimer()
    {
        m_start = SteadyClock::now();
        m_timer = m_queue.repeat(interval, [this] {
            m_ticks.push_back(SteadyClock::now() - m_start);
            if (onTick)
                onTick();
        });
    }

    bool spinUntilTicks(std::size_t count)
    {
        return spinUntil([&] { return m_ticks.size() >= count; });
    }

    /// How far the ticks from number `from` on lie behind the last whole interval before them, at the least: a busy
    /// machine delays some of them, a lost rhythm all.
    SteadyClock::duration leastLateness(std::size_t from) const
    {
        SteadyClock::duration least = interval;
        for (std::size_t i = from; i < m_ticks.size(); ++i)
            least = std::min<SteadyClock::duration>(least, m_ticks[i] % interval);
        return least;
    }

    TrackingMainQueue m_queue;
    SteadyClock::time_point m_start;
    std::vector<SteadyClock::duration> m_ticks;
    std::function<void()> onTick;
    std::unique_ptr<RepeatingTimer> m_timer;
};

TEST_F(QtRepeatingTimerTest, TheFirstTickComesOneIntervalFromNow)
{
    startTimer();
    ASSERT_TRUE(spinUntilTicks(1));
    EXPECT_THAT(m_ticks[0], Ge(interval));
    EXPECT_THAT(m_ticks[0], Lt(2 * interval));
}

TEST_F(QtRepeatingTimerTest, NoTickIsEarlyAndNoneIsLeftOutOfTen)
{
    startTimer();
    ASSERT_TRUE(spinUntilTicks(10));
    for (std::size_t i = 0; i < 10; ++i)
        EXPECT_THAT(m_ticks[i], Ge((i + 1) * interval));
    EXPECT_LT(leastLateness(0), interval / 4);
}

TEST_F(QtRepeatingTimerTest, TicksThatTakeAQuarterOfTheIntervalDoNotDelayTheLaterOnes)
{
    onTick = [] { beBusyFor(interval / 4); };
    startTimer();
    ASSERT_TRUE(spinUntilTicks(14));
    EXPECT_LT(leastLateness(10), interval / 4);
}

TEST_F(QtRepeatingTimerTest, AMainThreadBusyForThreeAndAHalfIntervalsGetsOneLateTickAndThenTheOldRhythm)
{
    startTimer();
    beBusyFor(interval * 7 / 2);
    ASSERT_TRUE(spinUntilTicks(6));
    EXPECT_THAT(m_ticks[0], Ge(interval * 7 / 2));
    EXPECT_THAT(m_ticks[1], Ge(interval * 4));
    EXPECT_LT(leastLateness(1), interval / 4);
}

TEST_F(QtRepeatingTimerTest, TicksThatFallIntoABlockedTimeAreDroppedAndTheRhythmStays)
{
    startTimer();
    {
        const QtMainQueue::Blocker blocker(m_queue);
        spinFor(interval * 7 / 2);
        EXPECT_THAT(m_ticks, SizeIs(0));
    }
    ASSERT_TRUE(spinUntilTicks(5));
    EXPECT_THAT(m_ticks[0], Ge(interval * 4));
    EXPECT_LT(leastLateness(0), interval / 4);
}

TEST_F(QtRepeatingTimerTest, TicksThatFallIntoAnOpenMenuAreDroppedWhileJobsRun)
{
    startTimer();
    m_queue.isMenuOpen = true;
    bool hasRun = false;
    m_queue.async([&] { hasRun = true; });
    spinFor(interval * 7 / 2);
    EXPECT_THAT(m_ticks, SizeIs(0));
    EXPECT_TRUE(hasRun);
    m_queue.isMenuOpen = false;
    ASSERT_TRUE(spinUntilTicks(5));
    EXPECT_THAT(m_ticks, Each(Ge(interval * 4)));
    EXPECT_LT(leastLateness(0), interval / 4);
}

TEST_F(QtRepeatingTimerTest, NoTickFallsIntoAJobThatSpinsANestedEventLoop)
{
    startTimer();
    std::optional<std::size_t> ticksInTheJob;
    m_queue.async([&] {
        spinFor(interval * 5 / 2);
        ticksInTheJob = m_ticks.size();
    });
    ASSERT_TRUE(spinUntil([&] { return ticksInTheJob.has_value(); }));
    EXPECT_EQ(ticksInTheJob, 0u);
    EXPECT_TRUE(spinUntilTicks(1));
}

TEST_F(QtRepeatingTimerTest, JobsWaitUntilATickThatSpinsANestedEventLoopIsOver)
{
    bool hasRun = false;
    bool hadRunInTheTick = false;
    onTick = [&] {
        m_queue.async([&] { hasRun = true; });
        spinFor(20ms);
        hadRunInTheTick = hasRun;
        onTick = nullptr;
    };
    startTimer();
    ASSERT_TRUE(spinUntil([&] { return hasRun; }));
    EXPECT_FALSE(hadRunInTheTick);
}

TEST_F(QtRepeatingTimerTest, ATimerThatIsDestroyedInItsOwnTickTicksNoMore)
{
    onTick = [this] { m_timer.reset(); };
    startTimer();
    ASSERT_TRUE(spinUntilTicks(1));
    spinFor(interval * 3);
    EXPECT_THAT(m_ticks, SizeIs(1));
}

TEST_F(QtRepeatingTimerTest, ADestroyedTimerTicksNoMoreEvenWhenItsTimeHasCome)
{
    startTimer();
    beBusyFor(interval * 2);
    m_timer.reset();
    spinFor(interval * 2);
    EXPECT_THAT(m_ticks, SizeIs(0));
}

TEST_F(QtRepeatingTimerTest, TwoTimersTickIndependently)
{
    int others = 0;
    const auto other = m_queue.repeat(interval / 4, [&] { ++others; });
    startTimer();
    ASSERT_TRUE(spinUntilTicks(3));
    EXPECT_GE(others, 6);
    m_timer.reset();
    const int before = others;
    EXPECT_TRUE(spinUntil([&] { return others > before; }));
}

} // namespace
} // namespace companion::testing
