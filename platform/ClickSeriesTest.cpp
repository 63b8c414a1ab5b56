#include "platform/ClickSeries.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

const ClickSeries::TimePoint start{71h};

} // namespace

class ClickSeriesTest : public ::testing::Test {
protected:
    void SetUp() override { series.addPress({start, {1103, 207}, 7}, 1); }

    ClickSeries series{ClickRules{400ms, 5}};
};

TEST(EmptyClickSeriesTest, NothingContinuesASeriesThatHasNotBegun)
{
    EXPECT_EQ(ClickSeries({}).count(), 0);
    EXPECT_FALSE(ClickSeries({}).isContinuedBy({}, 1));
}

TEST_F(ClickSeriesTest, APress399MillisecondsLaterIsTheSecondOne)
{
    EXPECT_TRUE(series.isContinuedBy({start + 399ms, {1103, 207}, 7}, 1));
    EXPECT_FALSE(series.isContinuedBy({start + 400ms, {1103, 207}, 7}, 1));
}

TEST_F(ClickSeriesTest, APress5PixelsAwayOnEachAxisIsTheSecondOneAnd6PixelsOnOneAreNot)
{
    EXPECT_TRUE(series.isContinuedBy({start + 1ms, {1108, 202}, 7}, 1));
    EXPECT_FALSE(series.isContinuedBy({start + 1ms, {1109, 207}, 7}, 1));
    EXPECT_FALSE(series.isContinuedBy({start + 1ms, {1103, 213}, 7}, 1));
}

TEST_F(ClickSeriesTest, AtScale2TheDistanceIs10Pixels)
{
    EXPECT_TRUE(series.isContinuedBy({start + 1ms, {1113, 207}, 7}, 2));
    EXPECT_FALSE(series.isContinuedBy({start + 1ms, {1114, 207}, 7}, 2));
}

TEST_F(ClickSeriesTest, APressOnAnotherWindowBeginsASeriesOfItsOwn)
{
    EXPECT_FALSE(series.isContinuedBy({start + 1ms, {1103, 207}, 8}, 1));
    series.addPress({start + 1ms, {1103, 207}, 8}, 1);
    EXPECT_EQ(series.count(), 1);
}

TEST_F(ClickSeriesTest, AfterAResetNothingIsContinued)
{
    series.reset();
    EXPECT_EQ(series.count(), 0);
    EXPECT_FALSE(series.isContinuedBy({start + 1ms, {1103, 207}, 7}, 1));
}

TEST_F(ClickSeriesTest, AfterAPress399MillisecondsAgoADoubleClickNeedsOneMore)
{
    EXPECT_EQ(series.missingPresses({start + 399ms, {1103, 207}, 7}, 1, /*isHeld=*/false), 1);
    EXPECT_EQ(series.missingPresses({start + 400ms, {1103, 207}, 7}, 1, /*isHeld=*/false), 2);
    EXPECT_EQ(series.missingPresses({start + 400ms, {1103, 207}, 7}, 1, /*isHeld=*/true), 2);
}

TEST_F(ClickSeriesTest, AfterADoubleClickNoneIsMissingAsLongAsItsButtonIsHeld)
{
    series.addPress({start + 300ms, {1103, 207}, 7}, 1);
    EXPECT_EQ(series.missingPresses({start + 301ms, {1103, 207}, 7}, 1, /*isHeld=*/false), 0);
    EXPECT_EQ(series.missingPresses({start + 9s, {1103, 207}, 7}, 1, /*isHeld=*/true), 0);
    EXPECT_EQ(series.missingPresses({start + 9s, {1103, 207}, 7}, 1, /*isHeld=*/false), 2);
}

TEST_F(ClickSeriesTest, EachPressIsMeasuredAgainstTheOneBefore)
{
    series.addPress({start + 399ms, {1108, 207}, 7}, 1);
    EXPECT_EQ(series.count(), 2);
    series.addPress({start + 798ms, {1113, 207}, 7}, 1);
    EXPECT_EQ(series.count(), 3);
    series.addPress({start + 1198ms, {1113, 207}, 7}, 1);
    EXPECT_EQ(series.count(), 1);
}

} // namespace companion::testing
