#include "platform/x11/RootPixel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace companion::testing {

void PrintTo(RootPixel pixel, std::ostream* out)
{
    *out << pixel.x << "," << pixel.y;
}

namespace {

constexpr ScreenMapping plain{.size = {1366, 768}};

} // namespace

TEST(RootPixelTest, HalvesRoundAwayFromZero)
{
    EXPECT_EQ(toRootPixel({682.49, 383.5}, plain), (RootPixel{682, 384}));
    EXPECT_EQ(toRootPixel({-0.49, -21.5}, plain), (RootPixel{0, -22}));
}

TEST(RootPixelTest, TheScreenAt640Comma210WithScale2AddsItsOriginToTwiceThePoint)
{
    const ScreenMapping mapping{640, 210, 2, {683, 384}};
    EXPECT_EQ(toRootPixel({0, 0}, mapping), (RootPixel{640, 210}));
    EXPECT_EQ(toRootPixel({100.3, 200.2}, mapping), (RootPixel{841, 610}));
    EXPECT_EQ(toRootPixel({683, 384}, mapping), (RootPixel{2006, 978}));
}

TEST(RootPixelTest, CoordinatesEndWhere16BitsEnd)
{
    EXPECT_EQ(toRootPixel({32766.6, -32767.6}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(toRootPixel({32768, -32769}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(toRootPixel({65536 + 10, -65536 - 10}, plain), (RootPixel{32767, -32768}));
}

TEST(RootPixelTest, ValuesBeyond64BitsStayOnTheirSide)
{
    const double huge = std::ldexp(1.0, 63);
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(toRootPixel({huge, -huge}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(toRootPixel({-infinity, infinity}, plain), (RootPixel{-32768, 32767}));
}

TEST(RootPixelTest, NotANumberIsAPixelAllTheSame)
{
    EXPECT_EQ(toRootPixel({std::nan(""), 5}, plain), (RootPixel{-32768, 5}));
}

TEST(RootPixelTest, ARootOf1280By800EndsAt1279Comma799)
{
    EXPECT_EQ(clampedTo({1562, -21}, 1280, 800), (RootPixel{1279, 0}));
    EXPECT_EQ(clampedTo({-1, 800}, 1280, 800), (RootPixel{0, 799}));
    EXPECT_EQ(clampedTo({1279, 799}, 1280, 800), (RootPixel{1279, 799}));
}

} // namespace companion::testing
