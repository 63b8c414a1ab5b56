#include "platform/x11/XTestMouseEventPoster.h"

#include "tests/x11/PosterTest.h"

#include <cmath>
#include <regex>
#include <thread>

namespace companion::testing {

using XTestMouseEventPosterTest = PosterTest;

namespace {

} // namespace

TEST(XTestMouseEventPosterOpenTest, ADisplayThatIsNotThereIsToldByName)
{
    std::string whyNot;
    EXPECT_EQ(XTestMouseEventPoster::open(":64999", {}, whyNot), nullptr);
    EXPECT_EQ(whyNot, "Cannot open the X display \":64999\"");
}

TEST(XTestMouseEventPosterOpenTest, AServerWithoutXTestIsToldByName)
{
    ChildProcess xvfb({"Xvfb", "-displayfd", "1", "-extension", "XTEST", "-nolisten", "tcp", "-ac"});
    const std::regex numberLine(
        "(^|\n)([0-9]+)\n"); // warnings may come before it, to an ordinary user for example
    std::smatch number;
    std::string output;
    while (!std::regex_search(output = xvfb.output(), number, numberLine))
        ASSERT_FALSE(xvfb.waitForExit(20ms)) << output;
    const std::string display = ":" + number[2].str();
    std::string whyNot;
    EXPECT_EQ(XTestMouseEventPoster::open(display, {}, whyNot), nullptr);
    EXPECT_EQ(whyNot, "The X display \"" + display + "\" has no XTEST extension");
}

TEST_F(XTestMouseEventPosterTest, ATapIsAMotionAPressAndAReleaseInThatOrder)
{
    tap({1103.4, 207.5});
    EXPECT_EQ(recorded(), "motion 1103,208 press1 1103,208 release1 1103,208");
}

TEST_F(XTestMouseEventPosterTest, ThreeDragsBetweenPressAndReleaseArriveInOrderAndNothingMoves)
{
    post(leftDown, {100, 200});
    for (const double x : {101.0, 102.0, 90.0})
        post(leftDragged, {x, 200});
    post(leftUp, {90, 200});
    EXPECT_EQ(recorded(),
        "motion 100,200 press1 100,200 motion 101,200 motion 102,200 motion 90,200 release1 90,200");
}

TEST_F(XTestMouseEventPosterTest, AReleaseElsewhereMovesThereFirst)
{
    post(leftDown, {100, 200});
    post(leftUp, {100, 201});
    EXPECT_EQ(recorded(), "motion 100,200 press1 100,200 motion 100,201 release1 100,201");
}

TEST_F(XTestMouseEventPosterTest, APressWhereThePointerIsAlreadyMovesNothing)
{
    tap({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ADragWithinThePixelOfTheLastOneIsNotPosted)
{
    post(leftDragged, {50.6, 60});
    post(leftDragged, {51.4, 60.4});
    post(leftDragged, {51.6, 60.4});
    EXPECT_EQ(recorded(), "motion 51,60 motion 52,60");
}

TEST_F(XTestMouseEventPosterTest, ADragToTheSamePlaceIsPostedWhenAnotherHandMovedThePointerMeanwhile)
{
    auto otherHand = openPoster(server().display(), [this] { return mapping; });
    post(leftDragged, {100, 200});
    poster->sync();
    otherHand->post(MouseEvent{leftDragged, {700, 300}});
    otherHand->sync();
    post(leftDragged, {100, 200});
    post(leftDragged, {100, 200});
    EXPECT_EQ(recorded(), "motion 100,200 motion 700,300 motion 100,200");
}

TEST_F(XTestMouseEventPosterTest, AReleaseGoesToItsPlaceWhenAnotherHandMovedThePointerMeanwhile)
{
    auto otherHand = openPoster(server().display(), [this] { return mapping; });
    post(leftDown, {100, 200});
    poster->sync();
    otherHand->post(MouseEvent{leftDragged, {700, 300}});
    otherHand->sync();
    post(leftUp, {100, 200});
    EXPECT_EQ(recorded(), "motion 100,200 press1 100,200 motion 700,300 motion 100,200 release1 100,200");
}

TEST_F(XTestMouseEventPosterTest, ATapOffTheScreenIsRequestedAsItIsAndDoesNotDragWhereItIsHeld)
{
    recorder.takeRequestedMotions();
    tap({1562, -21});
    EXPECT_EQ(recorded(), "motion 1365,0 press1 1365,0 release1 1365,0");
    EXPECT_EQ(requestedMotions(), "1562,-21");
}

TEST_F(XTestMouseEventPosterTest, PointsBeyond63BitsDoNotWrapToTheOtherSide)
{
    recorder.takeRequestedMotions();
    const double huge = std::ldexp(1.0, 63);
    tap({huge, -huge});
    tap({-huge, huge});
    EXPECT_EQ(
        recorded(), "motion 1365,0 press1 1365,0 release1 1365,0 motion 0,767 press1 0,767 release1 0,767");
    EXPECT_EQ(requestedMotions(), "32767,-32768 -32768,32767");
}

TEST_F(XTestMouseEventPosterTest, AtScale2PointsAreTwoPixelsWideAndAHalfPointIsOne)
{
    mapping = ScreenMapping{0, 0, 2, {683, 384}};
    tap({341.5, 191.7});
    EXPECT_EQ(recorded(), "motion 683,383 press1 683,383 release1 683,383");
}

TEST_F(XTestMouseEventPosterTest, AScreenThatMovesIsFollowedFromTheNextEventOn)
{
    post(leftDown, {10, 20});
    mapping->originX = 640;
    post(leftDragged, {10, 20});
    post(leftUp, {10, 20});
    EXPECT_EQ(recorded(), "motion 10,20 press1 10,20 motion 650,20 release1 650,20");
}

TEST_F(XTestMouseEventPosterTest, WithoutAScreenNothingIsMade)
{
    EXPECT_EQ(poster->makeMouseEvent(leftUp, {1, 2})->at, (Point{1, 2}));
    mapping.reset();
    EXPECT_FALSE(poster->makeMouseEvent(leftUp, {1, 2}));
}

TEST_F(XTestMouseEventPosterTest, AScreenThatGoesBetweenMakingAndPostingStillLetsTheButtonGo)
{
    post(leftDown, {10, 20});
    mapping.reset();
    post(leftDragged, {30, 40});
    post(leftUp, {30, 40});
    EXPECT_EQ(recorded(), "motion 10,20 press1 10,20 release1 10,20");
}

TEST_F(XTestMouseEventPosterTest, APressWhileTheButtonIsHeldReleasesItFirstWhereThePointerIs)
{
    post(leftDown, {100, 200});
    post(leftDragged, {110, 200});
    tap({160, 200});
    EXPECT_EQ(recorded(),
        "motion 100,200 press1 100,200 motion 110,200 release1 110,200 motion 160,200 press1 160,200 release1 160,200");
}

TEST_F(XTestMouseEventPosterTest, AReleaseOfNothingOnlyMoves)
{
    post(leftUp, {160, 200});
    EXPECT_EQ(recorded(), "motion 160,200");
}

TEST_F(XTestMouseEventPosterTest, PressAndReleaseAreSentWithoutAFlush)
{
    post(leftDown, {55, 66});
    post(leftUp, {55, 66});
    std::string seen;
    for (int i = 0; i < 200 && seen.find("release") == std::string::npos; ++i) {
        std::this_thread::sleep_for(5ms);
        seen += recorder.takeText();
    }
    EXPECT_THAT(seen, ::testing::HasSubstr("release1 55,66"));
}

TEST_F(XTestMouseEventPosterTest, TheShiftKeyWithTheControlFlagHoldsBothUntilItIsReleased)
{
    std::optional<KeyEvent> down = poster->makeKeyEvent(56, /*isDown=*/true);
    ASSERT_TRUE(down);
    down->flags = controlModifierFlag;
    poster->post(*down);
    tap({3, 4});
    poster->post(*poster->makeKeyEvent(56, /*isDown=*/false));
    poster->sync();
    constexpr unsigned control = 4;
    constexpr unsigned shift = 1;
    std::vector<std::pair<std::string, unsigned>> seen;
    for (const XRecorder::Event& event : recorder.take())
        seen.emplace_back(event.what + std::to_string(event.detail), event.state & 0xff);
    EXPECT_THAT(seen,
        ::testing::ElementsAre(std::pair("keydown37", 0u), std::pair("keydown50", control),
            std::pair("press1", control | shift), std::pair("release1", control | shift),
            std::pair("keyup50", control | shift), std::pair("keyup37", control)));
}

TEST_F(XTestMouseEventPosterTest, TheShiftKeyWithoutAFlagIsOnlyThat)
{
    poster->post(KeyEvent{56, true, 0});
    poster->post(KeyEvent{56, false, 0});
    EXPECT_EQ(recorded(), "keydown50 3,4 keyup50 3,4");
}

TEST_F(XTestMouseEventPosterTest, OtherKeysCannotBeMade)
{
    EXPECT_FALSE(poster->makeKeyEvent(57, true));
    poster->post(KeyEvent{57, true, controlModifierFlag});
    EXPECT_EQ(recorded(), "");
}

} // namespace companion::testing
