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
    EXPECT_EQ(toRootPixel({683, 384}, mapping), (RootPixel{2005, 977}));
}

TEST(RootPixelTest, TheLastTouchOfALeftAndOfAnUpperMonitorIsNotOnTheNextOne)
{
    for (const double scale : {1.0, 1.5, 2.0}) {
        const ScreenMapping left{0, 0, scale, {1366 / scale, 768 / scale}};
        const double nearEdge = 1366 / scale * 32'745 / 32'767;
        EXPECT_EQ(toRootPixel({left.size.width, 0}, left), (RootPixel{1365, 0})) << scale;
        EXPECT_EQ(toRootPixel({nearEdge, left.size.height}, left), (RootPixel{1365, 767})) << scale;
        const ScreenMapping lowerRight{1366, 768, scale, {1366 / scale, 768 / scale}};
        EXPECT_EQ(toRootPixel({0, 0}, lowerRight), (RootPixel{1366, 768})) << scale;
        EXPECT_EQ(
            toRootPixel({lowerRight.size.width, lowerRight.size.height}, lowerRight), (RootPixel{2731, 1535}))
            << scale;
    }
}

TEST(RootPixelTest, ASizeInPointsThatWasRoundedUpStillEndsAtTheLastWholePixel)
{
    const ScreenMapping mapping{0, 0, 1.5, {911, 512}}; // 1366 x 768 pixels are 910.67 x 512 points
    EXPECT_EQ(toRootPixel({911, 512}, mapping), (RootPixel{1365, 767}));
}

TEST(RootPixelTest, PointsBeyondTheScreenKeepTheirDistance)
{
    EXPECT_EQ(toRootPixel({1366.6, 768.6}, plain), (RootPixel{1367, 769}));
    EXPECT_EQ(toRootPixel({-0.6, 767.9}, plain), (RootPixel{-1, 767}));
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
