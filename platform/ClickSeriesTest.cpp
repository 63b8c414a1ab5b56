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

    /// Which one of the series the press would be.
    int countOf(const ClickSeries::Press& press, double scale = 1) const
    {
        ClickSeries continued = series;
        continued.addPress(press, scale);
        return continued.count();
    }

    ClickSeries series{ClickRules{400ms, 5}};
};

TEST(EmptyClickSeriesTest, NothingIsCountedBeforeThereIsAPress)
{
    EXPECT_EQ(ClickSeries({}).count(), 0);
    EXPECT_FALSE(ClickSeries({}).hasDoubleClick(2, /*isHeld=*/true));
}

TEST_F(ClickSeriesTest, APress399MillisecondsLaterIsTheSecondOneAndOne400MillisecondsLaterIsAFirstOne)
{
    EXPECT_EQ(countOf({start + 399ms, {1103, 207}, 7}), 2);
    EXPECT_EQ(countOf({start + 400ms, {1103, 207}, 7}), 1);
}

TEST_F(ClickSeriesTest, APressOfTheSameMillisecondIsTheSecondOne)
{
    EXPECT_EQ(countOf({start, {1103, 207}, 7}), 2);
}

TEST_F(ClickSeriesTest, APress5PixelsAwayOnEachAxisIsTheSecondOneAnd6PixelsOnOneAreNot)
{
    EXPECT_EQ(countOf({start + 1ms, {1108, 202}, 7}), 2);
    EXPECT_EQ(countOf({start + 1ms, {1109, 207}, 7}), 1);
    EXPECT_EQ(countOf({start + 1ms, {1103, 213}, 7}), 1);
}

TEST_F(ClickSeriesTest, AtScale2TheDistanceIs10Pixels)
{
    EXPECT_EQ(countOf({start + 1ms, {1113, 207}, 7}, 2), 2);
    EXPECT_EQ(countOf({start + 1ms, {1114, 207}, 7}, 2), 1);
}

TEST_F(ClickSeriesTest, APressOnAnotherWindowBeginsASeriesOfItsOwn)
{
    EXPECT_EQ(countOf({start + 1ms, {1103, 207}, 8}), 1);
}

TEST_F(ClickSeriesTest, AfterAResetNothingIsContinued)
{
    series.reset();
    EXPECT_EQ(series.count(), 0);
    EXPECT_EQ(countOf({start + 1ms, {1103, 207}, 7}), 1);
}

TEST_F(ClickSeriesTest, AFirstPressIsNoDoubleClick)
{
    EXPECT_FALSE(series.hasDoubleClick(1, /*isHeld=*/true));
    EXPECT_FALSE(series.hasDoubleClick(2, /*isHeld=*/false));
}

TEST_F(
    ClickSeriesTest, ASecondPressIsTheDoubleClickWhoseFirstClickIsAskedForWhileItIsHeldAndItsSecondOneAnyTime)
{
    series.addPress({start + 300ms, {1103, 207}, 7}, 1);
    EXPECT_TRUE(series.hasDoubleClick(1, /*isHeld=*/true));
    EXPECT_FALSE(series.hasDoubleClick(1, /*isHeld=*/false));
    EXPECT_TRUE(series.hasDoubleClick(2, /*isHeld=*/false));
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
