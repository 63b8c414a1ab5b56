#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>

using namespace std::chrono_literals;

namespace companion::testing {

TEST(FakeMainQueueTest, RunsDelayedJobsAndTicksAtTheirOwnTimes)
{
    FakeMainQueue queue;
    Transcript transcript;
    queue.after(500ms, [&] { transcript.add("delayed"); });
    const auto timer = queue.repeat(300ms, [&] { transcript.add("tick"); });
    queue.async([&] { transcript.add("job"); });

    queue.advance(299ms);
    EXPECT_EQ(transcript.take(" "), "job");
    queue.advance(301ms);
    EXPECT_EQ(transcript.take(" "), "tick delayed tick");
}

TEST(FakeMainQueueTest, DestroyedTimerTicksNoMore)
{
    FakeMainQueue queue;
    int ticks = 0;
    auto timer = queue.repeat(4s, [&] { ++ticks; });
    queue.advance(4s);
    timer.reset();
    queue.advance(40s);
    EXPECT_EQ(ticks, 1);
    EXPECT_EQ(queue.runningTimers(), 0u);
}

} // namespace companion::testing
