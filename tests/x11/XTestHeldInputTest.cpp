// Whatever happens, the button is released, and not by the wrong hand.
#include "tests/support/XClient.h"
#include "tests/x11/PosterTest.h"

#include <atomic>
#include <thread>

namespace companion::testing {

using XTestHeldInputTest = PosterTest;

TEST_F(XTestHeldInputTest, WhileAnotherProgramGrabsTheServerPressAndReleaseArrive)
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

TEST_F(XTestHeldInputTest, DestructionReleasesWhatIsHeldWhereThePointerIs)
{
    post(leftDown, {100, 200});
    post(leftDragged, {120, 220});
    poster->post(KeyEvent{56, true, controlModifierFlag});
    recorded();
    poster.reset();
    EXPECT_EQ(recorder.takeText(), "release1 120,220 keyup50 120,220 keyup37 120,220");
}

TEST_F(XTestHeldInputTest, AnotherThreadReleasesWhatIsHeld)
{
    post(leftDown, {100, 200});
    recorded();
    std::thread([this] { poster->releaseHeldButton(); }).join();
    EXPECT_EQ(recorder.takeText(), "release1 100,200");
    poster.reset(); // the server takes no second release
}

TEST_F(XTestHeldInputTest, TheEndOfTouchesReleasesWhatIsHeldAndLaterPressesGoOn)
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

TEST_F(XTestHeldInputTest, OnceAnotherThreadHasReleasedWhatIsHeldNothingIsPressedAnyMore)
{
    poster->releaseHeldButton();
    post(leftDown, {100, 200});
    poster->post(KeyEvent{56, true, controlModifierFlag});
    EXPECT_EQ(recorded(), "motion 100,200");
}

TEST_F(XTestHeldInputTest, APressThatAnotherThreadsReleaseMeetsOnItsWayIsNotLeftHeldIn100Tries)
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

TEST_F(XTestHeldInputTest, WithNothingHeldAnotherThreadReleasesNothing)
{
    auto otherHand = openPoster(server().display(), [this] { return mapping; });
    otherHand->post(MouseEvent{leftDown, {100, 200}});
    otherHand->sync();
    poster->releaseHeldButton();
    recorded();
    otherHand.reset();
    EXPECT_EQ(recorder.takeText(), "release1 100,200");
}

TEST_F(XTestHeldInputTest, APressFindsTheButtonHeldByAProgramThatDiedAndHealsIt)
{
    auto dead = openPoster(server().display(), [this] { return mapping; });
    dead->post(MouseEvent{leftDown, {100, 200}});
    dead->sync();
    tap({300, 210});
    EXPECT_EQ(recorded(),
        "motion 100,200 press1 100,200 motion 300,210 release1 300,210 press1 300,210 release1 300,210");
}

TEST_F(XTestHeldInputTest, OpeningReleasesWhatAProgramThatDiedLeftHeld)
{
    std::string whyNot;
    const auto dead = XTestConnection::open(server().display(), whyNot);
    dead->setButtonDown(1, true);
    dead->sync();
    const auto next = openPoster(server().display(), [this] { return mapping; });
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4");
}

TEST_F(XTestHeldInputTest, TheBeginOfTouchesReleasesWhatAProgramThatDiedLeftHeldButNotWhatThisOneHolds)
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

TEST_F(XTestHeldInputTest, TwoPostersAreOneHandToPrograms)
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

} // namespace companion::testing
