#include "simulator/StrokeOrder.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::chrono_literals;
using Verdict = StrokeOrder::Verdict;

class StrokeOrderTest : public ::testing::Test {
protected:
    void play(const std::string& stroke, std::uint64_t part, const std::string& lines)
    {
        order.played(stroke, part, std::get<Gesture>(parseGesture(lines)), now);
    }

    Verdict judge(const std::string& stroke, std::uint64_t part) const
    {
        return order.judge(stroke, part, now);
    }

    StrokeOrder order;
    StrokeOrder::Time now{1717s};
};

TEST_F(StrokeOrderTest, PartsArePlayedInTurn)
{
    EXPECT_EQ(judge("a", 0), Verdict::Play);
    play("a", 0, "DOWN 1 2");
    EXPECT_EQ(judge("a", 1), Verdict::Play);
    EXPECT_EQ(judge("a", 2), Verdict::Early);
}

TEST_F(StrokeOrderTest, PartThatComesTwiceIsPlayedOnce)
{
    play("a", 0, "DOWN 1 2");
    EXPECT_EQ(judge("a", 0), Verdict::Played);
    play("a", 1, "UP 1 2");
    EXPECT_EQ(judge("a", 1), Verdict::Played);
}

TEST_F(StrokeOrderTest, PartBeforeTheFirstOneIsEarly)
{
    EXPECT_EQ(judge("a", 1), Verdict::Early);
    play("a", 0, "DOWN 1 2\nUP 1 2");
    EXPECT_EQ(judge("b", 1), Verdict::Early);
}

TEST_F(StrokeOrderTest, SkippedPartIsNotPlayedLater)
{
    play("a", 0, "DOWN 1 2");
    play("a", 2, "MOVE 3 4");
    EXPECT_EQ(judge("a", 1), Verdict::Played);
    EXPECT_EQ(judge("a", 3), Verdict::Play);
}

TEST_F(StrokeOrderTest, StrokeIsOverWithItsUp)
{
    play("a", 0, "DOWN 1 2\nMOVE 3 4\nUP 3 4");
    EXPECT_EQ(judge("a", 1), Verdict::Unknown);
    EXPECT_EQ(judge("b", 0), Verdict::Play);
}

TEST_F(StrokeOrderTest, SecondFingerWaitsUntilTheFirstHasBeenSilentForFiveSeconds)
{
    play("a", 0, "DOWN 1 2");
    now += 4999ms;
    EXPECT_EQ(judge("b", 0), Verdict::Busy);
    play("a", 1, "MOVE 5 6");
    now += 4999ms;
    EXPECT_EQ(judge("b", 0), Verdict::Busy);
    now += 1ms;
    EXPECT_EQ(judge("b", 0), Verdict::Play);
    EXPECT_EQ(judge("a", 2), Verdict::Play); // it only rested
}

TEST_F(StrokeOrderTest, SilentFingerIsReleasedAtItsLastPosition)
{
    play("a", 0, "DOWN 1 2\nMOVE 31000 17\nRAW x");
    EXPECT_EQ(order.liftBefore(0), (GestureStep{true, "UP,31000,17,"}));
    EXPECT_EQ(order.liftBefore(1), std::nullopt);
    play("b", 0, "DOWN 3 4");
    EXPECT_EQ(judge("a", 2), Verdict::Busy);
}

TEST_F(StrokeOrderTest, NothingIsReleasedAfterAnUpOrWithoutAReceiver)
{
    EXPECT_EQ(order.liftBefore(0), std::nullopt);
    play("a", 0, "DOWN 1 2\nUP 1 2");
    EXPECT_EQ(order.liftBefore(0), std::nullopt);
    play("b", 0, "DOWN 1 2");
    order.abandon();
    EXPECT_EQ(order.liftBefore(0), std::nullopt);
    EXPECT_EQ(judge("b", 1), Verdict::Unknown);
    EXPECT_EQ(judge("c", 0), Verdict::Play);
}

} // namespace
} // namespace companion::simulator
