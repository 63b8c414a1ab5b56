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

/// Where the server says nothing of its monitors.
RootPixel pixelOf(Point point, const ScreenMapping& mapping)
{
    return toRootPixel(point, mapping, areaOf(mapping, {}));
}

} // namespace

TEST(RootPixelTest, HalvesRoundAwayFromZero)
{
    EXPECT_EQ(pixelOf({682.49, 383.5}, plain), (RootPixel{682, 384}));
    EXPECT_EQ(pixelOf({-0.49, -21.5}, plain), (RootPixel{0, -22}));
}

TEST(RootPixelTest, TheScreenAt640Comma210WithScale2AddsItsOriginToTwiceThePoint)
{
    const ScreenMapping mapping{640, 210, 2, {683, 384}};
    EXPECT_EQ(pixelOf({0, 0}, mapping), (RootPixel{640, 210}));
    EXPECT_EQ(pixelOf({100.3, 200.2}, mapping), (RootPixel{841, 610}));
    EXPECT_EQ(pixelOf({683, 384}, mapping), (RootPixel{2005, 977}));
}

TEST(RootPixelTest, ASizeInPointsThatWasRoundedStillEndsAtTheLastWholePixel)
{
    const ScreenMapping roundedUp{0, 0, 1.5, {911, 512}}; // 1366 x 768 pixels are 910.67 x 512 points
    EXPECT_EQ(pixelOf({911, 512}, roundedUp), (RootPixel{1365, 767}));
}

TEST(RootPixelTest, WithTheMonitorsPixelsTheLastOneIsReachedAndNotLeftWhateverThePointsWereRoundedTo)
{
    const struct {
        int pixels;
        double scale;
        double points;
    } cases[] = {{641, 2, 321}, {1280, 1.5, 853}, {1366, 1.5, 911}, {1282, 5, 256}, {1282, 4, 321}};
    for (const auto& [pixels, scale, points] : cases) {
        const ScreenMapping mapping{640, 210, scale, {points, points}};
        const RootArea area{640, 210, pixels, pixels};
        EXPECT_EQ(toRootPixel({points, points}, mapping, area), (RootPixel{639 + pixels, 209 + pixels}))
            << pixels;
        EXPECT_EQ(toRootPixel({points / 2, 0}, mapping, area), (RootPixel{640 + (pixels + 1) / 2, 210}))
            << pixels;
    }
}

TEST(RootPixelTest, TheMainScreenIsTheMonitorAtItsPlaceAndOfItsSize)
{
    const std::vector<RootArea> monitors{
        {640, 210, 800, 600}, {0, 0, 641, 480}, {640, 210, 641, 480}, {640, 210, 644, 480}};
    EXPECT_EQ(areaOf({640, 210, 2, {321, 240}}, monitors), monitors[2]);
    EXPECT_EQ(areaOf({0, 0, 2, {321, 240}}, monitors), monitors[1]);
    EXPECT_EQ(areaOf({640, 210, 1, {800, 600}}, monitors), monitors[0]);
}

TEST(RootPixelTest, AMainScreenThatIsNoneOfTheMonitorsHasTheWholePixelsInItsSize)
{
    const ScreenMapping mapping{640, 210, 1.5, {911, 512}};
    const RootArea whole{640, 210, 1366, 768};
    EXPECT_EQ(areaOf(mapping, {}), whole);
    EXPECT_EQ(areaOf(mapping, {{0, 0, 1366, 768}, {640, 210, 1368, 768}, {640, 210, 1366, 770}}), whole);
    EXPECT_EQ(areaOf({0, 0, 1, {0, 0.4}}, {}), (RootArea{0, 0, 1, 1}));
}

TEST(RootPixelTest, PointsBeyondTheScreenKeepTheirDistance)
{
    EXPECT_EQ(pixelOf({1366.6, 768.6}, plain), (RootPixel{1367, 769}));
    EXPECT_EQ(pixelOf({-0.6, 767.9}, plain), (RootPixel{-1, 767}));
}

TEST(RootPixelTest, CoordinatesEndWhere16BitsEnd)
{
    EXPECT_EQ(pixelOf({32766.6, -32767.6}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(pixelOf({32768, -32769}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(pixelOf({65536 + 10, -65536 - 10}, plain), (RootPixel{32767, -32768}));
}

TEST(RootPixelTest, ValuesBeyond64BitsStayOnTheirSide)
{
    const double huge = std::ldexp(1.0, 63);
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(pixelOf({huge, -huge}, plain), (RootPixel{32767, -32768}));
    EXPECT_EQ(pixelOf({-infinity, infinity}, plain), (RootPixel{-32768, 32767}));
}

TEST(RootPixelTest, NotANumberIsAPixelAllTheSame)
{
    EXPECT_EQ(pixelOf({std::nan(""), 5}, plain), (RootPixel{-32768, 5}));
}

TEST(RootPixelTest, ARootOf1280By800EndsAt1279Comma799)
{
    EXPECT_EQ(clampedTo({1562, -21}, 1280, 800), (RootPixel{1279, 0}));
    EXPECT_EQ(clampedTo({-1, 800}, 1280, 800), (RootPixel{0, 799}));
    EXPECT_EQ(clampedTo({1279, 799}, 1280, 800), (RootPixel{1279, 799}));
}

} // namespace companion::testing
