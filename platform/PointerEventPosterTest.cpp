#include "platform/PointerEventPoster.h"

#include "platform/testing/FakeScreen.h"
#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>

#include <cmath>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

struct Pointer {
    Transcript transcript;
    std::optional<Size> area = Size{1920, 1080};
};

std::string text(double number)
{
    const std::string digits = std::to_string(std::lround(number * 100));
    return number == std::trunc(number) ? std::to_string(std::lround(number)) : digits + "/100";
}

class FakePointerDevice : public PointerDevice {
public:
    explicit FakePointerDevice(Pointer& pointer)
        : m_pointer(pointer)
    {
    }

    std::optional<Size> area() const override { return m_pointer.area; }
    void moveTo(Point at) override { m_pointer.transcript.add(text(at.x) + "," + text(at.y)); }
    void setLeftButtonDown(bool isDown) override { m_pointer.transcript.add(isDown ? "down" : "up"); }
    void flush() override { m_pointer.transcript.add("flush"); }
    void touchesBegin() override { m_pointer.transcript.add("begin"); }
    void releaseWhenProgramFails() override { m_pointer.transcript.add("up at failure"); }

private:
    Pointer& m_pointer;
};

} // namespace

/// The screen has 1366 × 768 points, the device 1920 × 1080.
class PointerEventPosterTest : public ::testing::Test {
protected:
    std::string post(MouseEventType type, Point at, std::int64_t clickState = 0)
    {
        poster->post(MouseEvent{type, at, clickState});
        return take();
    }
    std::string down(Point at, std::int64_t clickState = 0)
    {
        return post(MouseEventType::leftDown, at, clickState);
    }
    std::string up(Point at, std::int64_t clickState = 0)
    {
        return post(MouseEventType::leftUp, at, clickState);
    }
    std::string drag(Point at) { return post(MouseEventType::leftDragged, at); }

    /// What the second release of a double tap asks for.
    std::string doubleClick(Point at)
    {
        std::string posted = down(at, 1);
        posted += "|" + up(at, 1);
        posted += "|" + down(at, 2);
        return posted + "|" + up(at, 2);
    }

    std::string take() { return pointer.transcript.take(" "); }

    Pointer pointer;
    FakeScreen screen;
    ClickSeries::TimePoint now{71h};
    std::unique_ptr<PointerEventPoster> poster = std::make_unique<PointerEventPoster>(
        std::make_unique<FakePointerDevice>(pointer), screen,
        [] {
            return ClickRules{400ms, 5};
        },
        [this] { return now; });
};

TEST_F(PointerEventPosterTest, PointsAreScaledToTheDevice)
{
    EXPECT_EQ(drag({683, 384}), "960,540");
    EXPECT_EQ(down({341.5, 192}), "480,270 down");
    EXPECT_EQ(up({341.5, 192}), "up");
}

TEST_F(PointerEventPosterTest, EdgesAndPointsOffTheScreenBecomeTheLastPixelInside)
{
    EXPECT_EQ(drag({0, 0}), "0,0");
    EXPECT_EQ(drag({1366, 768}), "1919,1079");
    EXPECT_EQ(drag({-20, 99999}), "0,1079");
}

TEST_F(PointerEventPosterTest, AReleaseMovesOnlyIfItIsElsewhere)
{
    down({683, 384});
    EXPECT_EQ(up({0, 0}), "0,0 up");
}

TEST_F(PointerEventPosterTest, AReleaseWithoutItsPressIsDropped)
{
    EXPECT_EQ(up({683, 384}), "");
}

TEST_F(PointerEventPosterTest, WhatComesWhileTheDeviceCannotDeliverIsDroppedWithItsRelease)
{
    pointer.area.reset();
    EXPECT_EQ(down({683, 384}), "");
    EXPECT_EQ(drag({0, 0}), "");
    pointer.area = Size{1920, 1080};
    EXPECT_EQ(up({683, 384}), "");
}

TEST_F(PointerEventPosterTest, AButtonThatWasHeldWhenTheDeviceBrokeIsReleasedNoMore)
{
    down({683, 384});
    pointer.area.reset();
    EXPECT_EQ(drag({0, 0}), "");
    pointer.area = Size{1920, 1080};
    EXPECT_EQ(up({683, 384}), "");
}

TEST_F(PointerEventPosterTest, WithoutAScreenTheHeldButtonIsReleased)
{
    down({683, 384});
    screen.size.reset();
    EXPECT_EQ(up({683, 384}), "up");
}

TEST_F(PointerEventPosterTest, APressWhileTheButtonIsHeldReleasesItFirst)
{
    down({683, 384});
    EXPECT_EQ(down({0, 0}), "up 0,0 down");
}

TEST_F(PointerEventPosterTest, ADoubleTapWhosePressesProgramsCountAsOneDoubleClickGetsNoOther)
{
    down({683, 384});
    up({683, 384});
    now += 399ms;
    down({683, 384});
    EXPECT_EQ(doubleClick({683, 384}), "|up||");
}

TEST_F(PointerEventPosterTest, TapsThatAreTooSlowOrTooFarApartNeedOneMorePress)
{
    down({683, 384});
    up({683, 384});
    now += 400ms;
    down({683, 384});
    EXPECT_EQ(doubleClick({683, 384}), "up 960,540 down|up||");
}

TEST_F(PointerEventPosterTest, ADoubleTapWhoseSecondReleaseIsLateOrFarGetsTwoClicks)
{
    down({683, 384});
    up({683, 384});
    down({683, 384 + 45});
    up({683, 384});
    now += 700ms;
    EXPECT_EQ(doubleClick({683, 384}), "960,540 down|up|960,540 down|up");
}

TEST_F(PointerEventPosterTest, TheEndOfTouchesReleasesTheButtonOnce)
{
    down({683, 384});
    poster->touchesEnd();
    poster->touchesEnd();
    EXPECT_EQ(take(), "up");
    EXPECT_EQ(up({683, 384}), "");
}

TEST_F(PointerEventPosterTest, TheButtonIsReleasedWithThePoster)
{
    down({683, 384});
    poster.reset();
    EXPECT_EQ(take(), "up");
}

TEST_F(PointerEventPosterTest, NothingIsPressedAfterTheFinalRelease)
{
    poster->releaseHeldButton();
    EXPECT_EQ(down({683, 384}), "");
}

TEST_F(PointerEventPosterTest, WhenTheProgramFailsAHeldButtonIsReleasedByTheDevice)
{
    down({683, 384});
    poster->releaseHeldButton();
    EXPECT_EQ(take(), "up at failure");
}

TEST_F(PointerEventPosterTest, WhenTheProgramFailsTheDeviceIsNotAskedToReleaseWhatIsNotHeld)
{
    down({683, 384});
    up({683, 384});
    poster->releaseHeldButton();
    EXPECT_EQ(take(), "");
}

TEST_F(PointerEventPosterTest, ThereAreNoKeys)
{
    EXPECT_FALSE(poster->makeKeyEvent(56, true));
}

} // namespace companion::testing
