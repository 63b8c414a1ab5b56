#include "platform/avahi/TurnQueue.h"

#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace companion::testing {

/// Two places, at most four at work: "+3" is the begin of task 3, "-3" its suspension.
class TurnQueueTest : public ::testing::Test {
protected:
    TurnQueueTest()
    {
        for (int i = 0; i < 7; ++i) {
            const std::string number = std::to_string(i);
            turns.push_back(std::make_unique<TurnQueue::Turn>(
                queue, [this, number] { transcript.add("+" + number); },
                [this, number] { transcript.add("-" + number); }));
        }
    }

    std::string events() { return transcript.take(" "); }

    void enter(int from, int to)
    {
        for (int i = from; i <= to; ++i)
            turns[static_cast<std::size_t>(i)]->enter();
    }

    Transcript transcript;
    TurnQueue queue{2, 4};
    std::vector<std::unique_ptr<TurnQueue::Turn>> turns;
};

TEST_F(TurnQueueTest, OnlyAsManyBeginAsThereArePlaces)
{
    enter(0, 3);
    EXPECT_EQ(events(), "+0 +1");
}

TEST_F(TurnQueueTest, OneThatLeavesMakesRoomForTheFirstThatWaits)
{
    enter(0, 3);
    turns[1]->leave();
    EXPECT_EQ(events(), "+0 +1 +2");
}

TEST_F(TurnQueueTest, OneThatStepsAsideMakesRoomOnce)
{
    enter(0, 4);
    turns[0]->stepAside();
    turns[0]->stepAside();
    turns[0]->leave();
    EXPECT_EQ(events(), "+0 +1 +2");
}

TEST_F(TurnQueueTest, OneThatWaitedAndWentNeverBegins)
{
    enter(0, 3);
    turns[2].reset();
    turns[0].reset();
    EXPECT_EQ(events(), "+0 +1 +3");
}

TEST_F(TurnQueueTest, PastTheLimitTheOldestAsideIsSuspendedAndWaitsAgain)
{
    enter(0, 5);
    turns[1]->stepAside();
    turns[0]->stepAside();
    EXPECT_EQ(events(), "+0 +1 +2 +3");
    turns[2]->stepAside();
    EXPECT_EQ(events(), "-1 +4");
    turns[3]->leave();
    EXPECT_EQ(events(), "+5");
    turns[4]->leave();
    EXPECT_EQ(events(), "+1");
}

TEST_F(TurnQueueTest, EnteringAgainIsANewTurn)
{
    enter(0, 2);
    turns[0]->enter();
    EXPECT_EQ(events(), "+0 +1 +2");
    turns[1]->leave();
    EXPECT_EQ(events(), "+0");
}

} // namespace companion::testing
