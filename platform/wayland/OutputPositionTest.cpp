#include "platform/wayland/OutputPosition.h"

#include <gtest/gtest.h>

#include <limits>

namespace companion::testing {

namespace {

constexpr Size area{1366, 768};
constexpr std::uint32_t width = 1366 * 256;
constexpr std::uint32_t height = 768 * 256;

} // namespace

TEST(OutputPositionTest, IsIn256thsOfAPoint)
{
    EXPECT_EQ(toOutputPosition({0, 0}, area), (OutputPosition{0, 0, width, height}));
    EXPECT_EQ(toOutputPosition({801.5, 302.251}, area), (OutputPosition{205'184, 77'376, width, height}));
}

TEST(OutputPositionTest, TheLastPointsAreInside)
{
    EXPECT_EQ(
        toOutputPosition({1365, 767}, area), (OutputPosition{width - 256, height - 256, width, height}));
}

TEST(OutputPositionTest, WhatLiesOffTheOutputComesToItsEdge)
{
    EXPECT_EQ(toOutputPosition({-0.6, 9000}, area), (OutputPosition{0, height, width, height}));
    EXPECT_EQ(toOutputPosition({1e300, -1e300}, area), (OutputPosition{width, 0, width, height}));
}

TEST(OutputPositionTest, WhatIsNoNumberIsTheFirstPoint)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(toOutputPosition({nan, nan}, area), (OutputPosition{0, 0, width, height}));
}

TEST(OutputPositionTest, AnOutputOfNoSizeIsNeverDividedBy)
{
    EXPECT_EQ(toOutputPosition({3, 4}, {0, 0}), (OutputPosition{0, 0, 1, 1}));
}

} // namespace companion::testing
