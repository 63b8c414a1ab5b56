#include "platform/x11/XTestMouseEventPoster.h"
#include "platform/FlushingPause.h"
#include "platform/testing/FakeLog.h"
#include "tests/support/XClient.h"
#include "tests/support/XRecorder.h"
#include "tests/support/XvfbServer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <regex>
#include <thread>

namespace companion::testing {

using namespace std::chrono_literals;
using enum MouseEventType;

namespace {

// One server for the whole file; each test reads only what it posted itself.
XvfbServer& server()
{
    static XvfbServer xvfb("1366x768");
    return xvfb;
}

std::unique_ptr<XTestMouseEventPoster> openPoster(
    const std::string& display, XTestMouseEventPoster::Mapping mapping,
    XTestMouseEventPoster::Now now = std::chrono::steady_clock::now,
    XTestMouseEventPoster::Rules rules = [] { return ClickRules(); })
{
    std::string whyNot;
    auto poster =
        XTestMouseEventPoster::open(display, std::move(mapping), whyNot, std::move(rules), std::move(now));
    if (!poster)
        throw std::runtime_error(whyNot);
    return poster;
}

class PauseThatLooks : public Pause {
public:
    explicit PauseThatLooks(XRecorder& recorder)
        : m_recorder(recorder)
    {
    }

    void pauseFor(std::chrono::microseconds duration) override
    {
        seen = m_recorder.takeText() + " in " + std::to_string(duration.count());
    }

    std::string seen;

private:
    XRecorder& m_recorder;
};

} // namespace

class XTestMouseEventPosterTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        post(leftDragged, {3, 4}); // a known place for the pointer
        recorded();
    }

    void TearDown() override
    {
        poster.reset();
        EXPECT_THAT(recorder.take(), ::testing::IsEmpty()) << "something was still held";
    }

    void post(MouseEventType type, Point at, std::int64_t clickState = 0)
    {
        poster->post(MouseEvent{type, at, clickState});
    }

    void tap(Point at)
    {
        post(leftDown, at);
        post(leftUp, at);
    }

    void doubleClick(Point at)
    {
        post(leftDown, at, 1);
        post(leftUp, at, 1);
        post(leftDown, at, 2);
        post(leftUp, at, 2);
    }

    std::string recorded()
    {
        poster->sync();
        return recorder.takeText();
    }

    std::string requestedMotions()
    {
        poster->sync();
        return recorder.takeRequestedMotions();
    }

    std::optional<ScreenMapping> mapping = ScreenMapping{.size = {1366, 768}};
    ClickSeries::TimePoint now{71h};
    ClickRules rules;
    XRecorder recorder{server().display()};
    std::unique_ptr<XTestMouseEventPoster> poster = openPoster(
        server().display(), [this] { return mapping; }, [this] { return now; }, [this] { return rules; });
};

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

// The double click comes at the release of the second tap, whose press is still held.

TEST_F(XTestMouseEventPosterTest, TapsThatProgramsCountedAsADoubleClickGetNoFurtherPress)
{
    tap({3, 4});
    now += 399ms;
    post(leftDown, {8, 4});
    now += 600ms;
    doubleClick({8, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 motion 8,4 press1 8,4 release1 8,4");
}

TEST_F(XTestMouseEventPosterTest, TapsTooFarApartInTimeGetOneFurtherPress)
{
    tap({3, 4});
    now += 400ms;
    post(leftDown, {3, 4});
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ALongerDoubleClickTimeThatIsSetWhileItRunsHoldsForTheNextTaps)
{
    rules.interval = 900ms;
    tap({3, 4});
    now += 700ms;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, TapsTooFarApartInSpaceGetOneFurtherPress)
{
    tap({3, 4});
    now += 150ms;
    post(leftDown, {33, 4});
    now += 50ms;
    doubleClick({33, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 motion 33,4 press1 33,4 release1 33,4 press1 33,4 release1 33,4");
}

TEST_F(XTestMouseEventPosterTest, ASecondTapHeldFor400MillisecondsGetsTwoFurtherPresses)
{
    tap({3, 4});
    now += 400ms;
    post(leftDown, {3, 4});
    now += 400ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4 "
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ASecondTapReleased6PixelsFromItsPressGetsTwoFurtherPressesThere)
{
    tap({3, 4});
    now += 150ms;
    post(leftDown, {33, 4});
    now += 50ms;
    post(leftDragged, {39, 4});
    doubleClick({39, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 motion 33,4 press1 33,4 motion 39,4 release1 39,4 "
        "press1 39,4 release1 39,4 press1 39,4 release1 39,4");
}

TEST_F(XTestMouseEventPosterTest, AtScale2TapsTenPixelsApartAreCountedAsADoubleClick)
{
    mapping->scale = 2;
    tap({50, 60});
    now += 150ms;
    post(leftDown, {55, 60});
    doubleClick({55, 60});
    EXPECT_EQ(recorded(),
        "motion 100,120 press1 100,120 release1 100,120 motion 110,120 press1 110,120 release1 110,120");
}

TEST_F(XTestMouseEventPosterTest, AThirdQuickTapIsPostedAndASynthesisedDoubleClickUponItIsNot)
{
    for (int i = 0; i < 3; ++i) {
        tap({3, 4});
        now += 150ms;
    }
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ADoubleClickWithNothingHeldOrCountedIsPostedWhole)
{
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ADoubleClickWithNothingHeldSoonAfterATapGetsOnePress)
{
    tap({3, 4});
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ADoubleClickWithNothingHeldSoonAfterADoubleClickIsLeftOut)
{
    doubleClick({3, 4});
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ADoubleClickAfterOneThatWasShortenedIsWholeAgain)
{
    tap({3, 4});
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    recorded();
    now += 5s;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ASecondTapOnWhatLaysBelowAWindowThatTheFirstTapClosedGetsOneFurtherPress)
{
    XClient program(server().display());
    const unsigned long window = program.openWindow(0, 0, 50, 50);
    tap({3, 4});
    poster->sync();
    program.closeWindow(window);
    now += 150ms;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, ASecondTapAfterAClickOfTheRealMouseGetsOneFurtherPress)
{
    XClient program(server().display());
    tap({3, 4});
    poster->sync();
    if (!program.clickWithMouse())
        GTEST_SKIP() << "this X server has no mouse of its own";
    recorder.take();
    now += 150ms;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, WhileAnotherProgramGrabsTheServerPressAndReleaseArrive)
{
    XClient windowManager(server().display());
    post(leftDown, {100, 200});
    poster->sync();
    windowManager.grabServer();
    EXPECT_TRUE(windowManager.isLeftButtonDown());
    post(leftDragged, {120, 200});
    post(leftUp, {130, 200});
    poster->sync();
    EXPECT_FALSE(windowManager.isLeftButtonDown());
    post(leftDown, {140, 200});
    poster->sync();
    EXPECT_TRUE(windowManager.isLeftButtonDown());
    post(leftUp, {140, 200});
    windowManager.ungrabServer();
    EXPECT_EQ(recorded(),
        "motion 100,200 press1 100,200 motion 120,200 motion 130,200 release1 130,200 motion 140,200 "
        "press1 140,200 release1 140,200");
}

TEST_F(XTestMouseEventPosterTest, APauseBeginsWhenTheServerHasSeenWhatWasPostedBefore)
{
    PauseThatLooks look(recorder);
    FlushingPause pause(look, *poster);
    post(leftDragged, {55, 66});
    pause.pauseFor(1000us);
    EXPECT_EQ(look.seen, "motion 55,66 in 1000");
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

TEST_F(XTestMouseEventPosterTest, DestructionReleasesWhatIsHeldWhereThePointerIs)
{
    post(leftDown, {100, 200});
    post(leftDragged, {120, 220});
    poster->post(KeyEvent{56, true, controlModifierFlag});
    recorded();
    poster.reset();
    EXPECT_EQ(recorder.takeText(), "release1 120,220 keyup50 120,220 keyup37 120,220");
}

TEST_F(XTestMouseEventPosterTest, AnotherThreadReleasesWhatIsHeld)
{
    post(leftDown, {100, 200});
    recorded();
    std::thread([this] { poster->releaseHeldButton(); }).join();
    EXPECT_EQ(recorder.takeText(), "release1 100,200");
    poster.reset(); // the server takes no second release
}

TEST(XTestMouseEventPosterLogTest, TheServersEndIsToldOnce)
{
    XvfbServer xvfb;
    Transcript transcript;
    FakeSystemLog log(transcript);
    const auto poster = openPoster(xvfb.display(), [] { return ScreenMapping{}; });
    poster->setLog(log);
    poster->sync();
    EXPECT_EQ(transcript.take(), "");
    xvfb.stop();
    for (int i = 0; i < 3; ++i) {
        poster->post(MouseEvent{leftDown, {100, 200}});
        poster->sync();
    }
    EXPECT_EQ(transcript.take(),
        "log The connection to the X display \"" + xvfb.display()
            + "\" is lost: touches move nothing any more");
}

TEST(XTestMouseEventPosterLogTest, ALostServerIsConnectedToAgainOnceASecondAndThatIsLogged)
{
    XvfbServer xvfb;
    Transcript transcript;
    FakeSystemLog log(transcript);
    ClickSeries::TimePoint now{71h};
    const auto poster = openPoster(
        xvfb.display(), [] { return ScreenMapping{}; }, [&] { return now; });
    poster->setLog(log);
    xvfb.stop();
    poster->post(MouseEvent{leftDown, {100, 200}});
    poster->post(MouseEvent{leftUp, {100, 200}}); // tries to connect, in vain
    transcript.take();

    xvfb.startAgain();
    XRecorder recorder(xvfb.display());
    now += 999ms;
    poster->post(MouseEvent{leftDown, {100, 200}});
    EXPECT_EQ(transcript.take(), "");
    now += 1ms;
    poster->post(MouseEvent{leftUp, {100, 200}});
    poster->post(MouseEvent{leftDown, {300, 200}});
    poster->sync();
    EXPECT_EQ(transcript.take(), "log The connection to the X display \"" + xvfb.display() + "\" is back");
    EXPECT_EQ(recorder.takeText(), "motion 100,200 motion 300,200 press1 300,200");
}

TEST_F(XTestMouseEventPosterTest, TheEndOfTouchesReleasesWhatIsHeldAndLaterPressesGoOn)
{
    post(leftDown, {100, 200});
    poster->touchesEnd();
    poster->touchesEnd();
    EXPECT_EQ(recorded(), "motion 100,200 press1 100,200 release1 100,200");
    post(leftDragged, {110, 200});
    post(leftUp, {120, 200});
    EXPECT_EQ(recorded(), "motion 110,200 motion 120,200") << "there is nothing to release any more";
    post(leftDown, {500, 300});
    post(leftUp, {500, 300});
    EXPECT_EQ(recorded(), "motion 500,300 press1 500,300 release1 500,300");
}

TEST_F(XTestMouseEventPosterTest, OnceAnotherThreadHasReleasedWhatIsHeldNothingIsPressedAnyMore)
{
    poster->releaseHeldButton();
    post(leftDown, {100, 200});
    poster->post(KeyEvent{56, true, controlModifierFlag});
    EXPECT_EQ(recorded(), "motion 100,200");
}

TEST_F(XTestMouseEventPosterTest, APressThatAnotherThreadsReleaseMeetsOnItsWayIsNotLeftHeldIn100Tries)
{
    for (int i = 0; i < 100; ++i) {
        auto racer = openPoster(server().display(), [this] { return mapping; });
        std::atomic<bool> isStarted = false;
        std::thread other([&] {
            while (!isStarted) { }
            racer->releaseHeldButton();
        });
        isStarted = true;
        racer->post(MouseEvent{leftDown, {100, 200}});
        other.join();
        racer->sync();
        std::string whyNot;
        const bool isHeld = XTestConnection::open(server().display(), whyNot)->lookAt({})->isLeftButtonDown;
        racer.reset();
        ASSERT_FALSE(isHeld) << "at try " << i;
    }
    recorder.take();
}

TEST_F(XTestMouseEventPosterTest, WithNothingHeldAnotherThreadReleasesNothing)
{
    auto otherHand = openPoster(server().display(), [this] { return mapping; });
    otherHand->post(MouseEvent{leftDown, {100, 200}});
    otherHand->sync();
    poster->releaseHeldButton();
    recorded();
    otherHand.reset();
    EXPECT_EQ(recorder.takeText(), "release1 100,200");
}

TEST_F(XTestMouseEventPosterTest, APressFindsTheButtonHeldByAProgramThatDiedAndHealsIt)
{
    auto dead = openPoster(server().display(), [this] { return mapping; });
    dead->post(MouseEvent{leftDown, {100, 200}});
    dead->sync();
    tap({300, 210});
    EXPECT_EQ(recorded(),
        "motion 100,200 press1 100,200 motion 300,210 release1 300,210 press1 300,210 release1 300,210");
}

TEST_F(XTestMouseEventPosterTest, OpeningReleasesWhatAProgramThatDiedLeftHeld)
{
    std::string whyNot;
    const auto dead = XTestConnection::open(server().display(), whyNot);
    dead->setButtonDown(1, true);
    dead->sync();
    const auto next = openPoster(server().display(), [this] { return mapping; });
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4");
}

TEST_F(XTestMouseEventPosterTest, TheBeginOfTouchesReleasesWhatAProgramThatDiedLeftHeldButNotWhatThisOneHolds)
{
    std::string whyNot;
    const auto dead = XTestConnection::open(server().display(), whyNot);
    dead->setButtonDown(1, true);
    dead->sync();
    poster->touchesBegin();
    post(leftDown, {100, 200});
    poster->touchesBegin();
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 motion 100,200 press1 100,200");
    post(leftUp, {100, 200});
    recorded();
}

TEST_F(XTestMouseEventPosterTest, TwoPostersAreOneHandToPrograms)
{
    auto otherHand = openPoster(server().display(), [this] { return mapping; });
    post(leftDown, {100, 200});
    poster->sync();
    otherHand->post(MouseEvent{leftDragged, {110, 200}});
    otherHand->sync();
    otherHand->post(MouseEvent{leftUp, {110, 200}}); // holds nothing itself
    otherHand->sync();
    post(leftUp, {110, 200});
    EXPECT_EQ(recorded(), "motion 100,200 press1 100,200 motion 110,200 release1 110,200");
}

TEST(XTestMouseEventPosterMonitorsTest, ThePointsOfTheRightMonitorLieInTheRightHalfOfTheRoot)
{
    if (!isInstalled("xrandr"))
        GTEST_SKIP() << "xrandr (package x11-xserver-utils) is missing";
    XvfbServer xvfb("1280x800");
    const std::map<std::string, std::string> environment{{"DISPLAY", xvfb.display()}};
    ChildProcess left({"xrandr", "--setmonitor", "L", "640/170x800/210+0+0", "screen"}, environment);
    ASSERT_EQ(left.waitForExit(), 0);
    ChildProcess right({"xrandr", "--setmonitor", "R", "640/170x800/210+640+0", "none"}, environment);
    ASSERT_EQ(right.waitForExit(), 0);
    ChildProcess list({"xrandr", "--listmonitors"}, environment);
    ASSERT_EQ(list.waitForExit(), 0);
    const std::regex geometry(R"( R (\d+)/\d+x(\d+)/\d+\+(\d+)\+(\d+))");
    std::smatch found;
    const std::string monitors = list.output();
    ASSERT_TRUE(std::regex_search(monitors, found, geometry)) << monitors;
    const auto number = [&](int group) { return std::stod(found[static_cast<std::size_t>(group)].str()); };
    const ScreenMapping mapping{number(3), number(4), 1, {number(1), number(2)}};

    XRecorder recorder(xvfb.display());
    auto poster = openPoster(xvfb.display(), [&] { return mapping; });
    poster->post(MouseEvent{leftDown, {5, 7}});
    poster->post(MouseEvent{leftUp, {mapping.size.width, mapping.size.height}});
    poster->sync();
    EXPECT_EQ(recorder.takeText(), "motion 645,7 press1 645,7 motion 1279,799 release1 1279,799");
}

/// A server whose physical buttons are mapped as a left-handed person wants them. Seen is what programs are told that is
/// held: what is recorded is the physical button.
class XTestMouseEventPosterMappingTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!isInstalled("xmodmap"))
            GTEST_SKIP() << "xmodmap (package x11-xserver-utils) is missing";
        std::string whyNot;
        observer = XTestConnection::open(xvfb.display(), whyNot);
        ASSERT_TRUE(observer) << whyNot;
    }

    void map(const std::string& buttons)
    {
        ChildProcess program({"xmodmap", "-e", "pointer = " + buttons}, {{"DISPLAY", xvfb.display()}});
        ASSERT_EQ(program.waitForExit(), 0) << program.output();
    }

    void open()
    {
        poster = openPoster(xvfb.display(), [] { return ScreenMapping{}; });
    }

    void post(MouseEventType type)
    {
        poster->post(MouseEvent{type, {5, 7}});
        poster->sync();
    }

    bool isLeftButtonDown() { return observer->lookAt({}).value().isLeftButtonDown; }

    void expectLeftClick()
    {
        post(leftDown);
        EXPECT_TRUE(isLeftButtonDown());
        post(leftUp);
        EXPECT_FALSE(isLeftButtonDown());
    }

    XvfbServer xvfb;
    std::unique_ptr<XTestConnection> observer;
    std::unique_ptr<XTestMouseEventPoster> poster;
};

TEST_F(XTestMouseEventPosterMappingTest, WithButtons1And3SwappedATapIsStillALeftClick)
{
    map("3 2 1");
    open();
    expectLeftClick();
}

TEST_F(XTestMouseEventPosterMappingTest, ButtonsThatAreSwappedWhileItRunsAreFollowedFromTheNextPressOn)
{
    open();
    expectLeftClick();
    map("3 2 1");
    expectLeftClick();
    map("2 1 3");
    expectLeftClick();
    map("1 2 3");
    expectLeftClick();
}

TEST_F(XTestMouseEventPosterMappingTest, AnotherThreadReleasesThePhysicalButtonThatWasPressed)
{
    map("2 1 3");
    open();
    post(leftDown);
    ASSERT_TRUE(isLeftButtonDown());
    std::thread([this] { poster->releaseHeldButton(); }).join();
    EXPECT_FALSE(isLeftButtonDown());
}

TEST_F(XTestMouseEventPosterMappingTest, DestructionReleasesThePhysicalButtonThatWasPressed)
{
    map("3 2 1");
    open();
    post(leftDown);
    ASSERT_TRUE(isLeftButtonDown());
    poster.reset();
    EXPECT_FALSE(isLeftButtonDown());
}

TEST_F(XTestMouseEventPosterMappingTest, APressFindsTheLeftButtonHeldByAProgramThatDiedAndHealsIt)
{
    map("3 2 1");
    observer->setButtonDown(3, true);
    ASSERT_TRUE(isLeftButtonDown());
    open();
    expectLeftClick();
}

TEST_F(XTestMouseEventPosterMappingTest, WhereNoButtonIsTheLeftOneTheFirstIsPressed)
{
    map("3 2 0");
    open();
    XRecorder recorder(xvfb.display());
    post(leftDown);
    post(leftUp);
    EXPECT_EQ(recorder.takeText(), "motion 5,7 press1 5,7 release1 5,7");
}

TEST(XTestMouseEventPosterLossTest, AServerThatDiesMakesEveryCallANoOperationAndEndsNothing)
{
    auto xvfb = std::make_unique<XvfbServer>();
    auto poster = openPoster(xvfb->display(), [] { return ScreenMapping{}; });
    poster->post(MouseEvent{leftDown, {5, 7}});
    xvfb.reset();
    for (int i = 0; i < 3; ++i) {
        poster->post(MouseEvent{leftDragged, {double(i), 7}});
        poster->post(MouseEvent{leftUp, {5, 7}});
        poster->post(MouseEvent{leftDown, {5, 7}});
        poster->flush();
        poster->sync();
    }
    EXPECT_FALSE(poster->makeKeyEvent(56, true));
    poster->releaseHeldButton();
    poster.reset();
}

} // namespace companion::testing
