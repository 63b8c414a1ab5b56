#include "platform/portal/RemoteDesktopPointer.h"

#include "platform/testing/FakeScreen.h"
#include "platform/testing/Transcript.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

namespace companion::testing {

namespace {

using Kind = PortalAnswer::Kind;
using Loss = RemoteDesktopPortal::Loss;
using namespace std::chrono_literals;

/// What a portal does is up to the test, which answers each call.
struct PortalSide {
    Transcript calls;
    RemoteDesktopPortal::VersionRead versionRead;
    RemoteDesktopPortal::Answered answered;
    std::deque<RemoteDesktopPortal::Notified> notified;
    std::function<void(RemoteDesktopPortal::Loss)> whenLost;
    std::function<void(bool isLocked)> whenLocked;
};

class FakePortal : public RemoteDesktopPortal {
public:
    explicit FakePortal(PortalSide& side)
        : m_side(side)
    {
    }

    void readVersion(VersionRead read) override
    {
        m_side.calls.add("version");
        m_side.versionRead = std::move(read);
    }
    void createSession(Answered answered) override { request("create", std::move(answered)); }
    void selectPointer(PersistMode mode, const std::string& restoreToken, Answered answered) override
    {
        request("pointer mode " + std::to_string(static_cast<int>(mode)) + " token " + restoreToken,
            std::move(answered));
    }
    void selectMonitor(Answered answered) override { request("monitor", std::move(answered)); }
    void start(Answered answered) override { request("start", std::move(answered)); }
    void notifyMotion(std::uint32_t streamNode, Point at, Notified answered) override
    {
        m_side.calls.add("move " + std::to_string(std::lround(at.x)) + "," + std::to_string(std::lround(at.y))
            + " on " + std::to_string(streamNode));
        m_side.notified.push_back(std::move(answered));
    }
    void notifyLeftButton(bool isDown, Notified answered) override
    {
        m_side.calls.add(isDown ? "down" : "up");
        m_side.notified.push_back(std::move(answered));
    }
    void closeSession() override { m_side.calls.add("close"); }
    void setWhenLost(std::function<void(Loss)> whenLost) override { m_side.whenLost = std::move(whenLost); }
    void setWhenLocked(std::function<void(bool isLocked)> whenLocked) override
    {
        m_side.whenLocked = std::move(whenLocked);
    }

private:
    void request(const std::string& what, Answered answered)
    {
        m_side.calls.add(what);
        m_side.answered = std::move(answered);
    }

    PortalSide& m_side;
};

PortalAnswer consent(const std::string& token = "")
{
    PortalAnswer answer;
    answer.isPointerAllowed = true;
    answer.stream = ScreenStream{71, Size{1920, 1080}};
    answer.restoreToken = token;
    return answer;
}

PortalAnswer answerOfKind(Kind kind, const std::string& error = "")
{
    PortalAnswer answer;
    answer.kind = kind;
    answer.error = error;
    return answer;
}

} // namespace

class RemoteDesktopPointerTest : public ::testing::Test {
protected:
    void answer(const PortalAnswer& given) { std::exchange(side.answered, nullptr)(given); }

    /// Everything up to the dialog.
    void ask(unsigned version = 2)
    {
        pointer->touchesBegin();
        answerUpToTheDialog(version);
    }

    void answerUpToTheDialog(unsigned version = 2)
    {
        side.versionRead(version, "");
        answer({});
        answer({});
        answer({});
    }

    void obtainConsent(const std::string& token = "")
    {
        ask();
        answer(consent(token));
        side.calls.clear();
    }

    void expectDropped(const std::string& why)
    {
        EXPECT_EQ(status, "No touch: " + why + "; turn touch on again to be asked again");
        EXPECT_EQ(pointer->area(), std::nullopt);
    }

    std::string calls() { return side.calls.take("|"); }

    PortalSide side;
    FakeScreen screen;
    std::string status = "as ever";
    RemoteDesktopPointer::TimePoint now{1234567ms};
    std::unique_ptr<RemoteDesktopPointer> pointer = std::make_unique<RemoteDesktopPointer>(
        std::make_unique<FakePortal>(side), screen, RestoreToken(),
        [this](const std::string& sentence) { status = sentence; }, [this] { return now; });
};

TEST_F(RemoteDesktopPointerTest, NothingIsAskedBeforeTouchesBegin)
{
    pointer->moveTo({1, 2});
    pointer->setLeftButtonDown(true);
    EXPECT_EQ(pointer->area(), std::nullopt);
    EXPECT_EQ(calls(), "");
}

TEST_F(RemoteDesktopPointerTest, ConsentIsAskedForInTheOrderOfThePortal)
{
    ask();
    EXPECT_EQ(calls(), "version|create|pointer mode 1 token |monitor|start");
    EXPECT_EQ(
        status, "Waiting for permission: pick a screen and allow remote interaction in the desktop's dialog");
    EXPECT_EQ(pointer->area(), std::nullopt);
    answer(consent());
    EXPECT_EQ(status, "");
    EXPECT_EQ(pointer->area(), (Size{1920, 1080}));
}

TEST_F(RemoteDesktopPointerTest, Version1HasNoTokens)
{
    ask(/*version=*/1);
    EXPECT_EQ(calls(), "version|create|pointer mode 0 token |monitor|start");
}

TEST_F(RemoteDesktopPointerTest, EventsAreSentInOrderToThePickedScreen)
{
    obtainConsent();
    pointer->moveTo({1103, 207});
    pointer->setLeftButtonDown(true);
    pointer->setLeftButtonDown(false);
    side.notified[0]("");
    side.notified[1]("");
    EXPECT_EQ(calls(), "move 1103,207 on 71|down|up");
}

TEST_F(RemoteDesktopPointerTest, TouchesThatBeginAgainAskNothingWhileAskingOrGranted)
{
    ask();
    calls();
    pointer->touchesBegin();
    EXPECT_EQ(calls(), "");
    answer(consent());
    pointer->touchesBegin();
    EXPECT_EQ(calls(), "");
}

TEST_F(RemoteDesktopPointerTest, ARefusalIsToldAndTheNextTouchOnAsksAgain)
{
    ask();
    answer(answerOfKind(Kind::cancelled));
    expectDropped("the desktop's dialog was cancelled");
    calls();
    ask();
    EXPECT_EQ(calls(), "version|create|pointer mode 1 token |monitor|start");
}

TEST_F(RemoteDesktopPointerTest, AFailureOfAnyStepIsTold)
{
    pointer->touchesBegin();
    side.versionRead(0, "no such service");
    expectDropped("the desktop's portal failed (no such service)");
    for (int steps = 0; steps < 4; ++steps) {
        pointer->touchesBegin();
        side.versionRead(2, "");
        for (int done = 0; done < steps; ++done)
            answer({});
        answer(answerOfKind(Kind::failed, "step " + std::to_string(steps)));
        expectDropped("the desktop's portal failed (step " + std::to_string(steps) + ")");
    }
}

TEST_F(RemoteDesktopPointerTest, AConsentWithoutThePointerOrAScreenIsNone)
{
    ask();
    PortalAnswer given = consent();
    given.isPointerAllowed = false;
    answer(given);
    expectDropped("remote interaction was not allowed in the desktop's dialog");
    EXPECT_EQ(side.calls.lines().back(), "close");

    ask();
    given = consent();
    given.stream.reset();
    answer(given);
    expectDropped("no screen was picked in the desktop's dialog");
    EXPECT_EQ(side.calls.lines().back(), "close");
}

TEST_F(RemoteDesktopPointerTest, WithoutASizeOfItsOwnTheScreenIsTheMainOne)
{
    ask();
    PortalAnswer given = consent();
    given.stream->size.reset();
    answer(given);
    EXPECT_EQ(pointer->area(), (Size{1366, 768}));
}

TEST_F(RemoteDesktopPointerTest, WhatTheDesktopClosesIsRestoredByTheNewestToken)
{
    obtainConsent("a1");
    side.whenLost(Loss::closed);
    expectDropped("the desktop stopped sharing the screen");
    pointer->setLeftButtonDown(true);
    EXPECT_EQ(calls(), "close");

    ask();
    EXPECT_EQ(calls(), "version|create|pointer mode 1 token a1|monitor|start");
    answer(consent("b2"));
    EXPECT_EQ(status, "");
    side.whenLost(Loss::portalGone);
    expectDropped("the desktop's portal has gone or was restarted");
    ask();
    EXPECT_EQ(calls(), "close|version|create|pointer mode 1 token b2|monitor|start");
}

TEST_F(RemoteDesktopPointerTest, ARefusedCallCountsAsClosed)
{
    obtainConsent();
    pointer->moveTo({1, 2});
    pointer->setLeftButtonDown(true);
    side.notified.front()("Invalid session");
    expectDropped("the desktop no longer takes touches (Invalid session)");
    EXPECT_EQ(side.calls.lines().back(), "close");
}

TEST_F(RemoteDesktopPointerTest, WhatIsClosedWhileTheScreenIsLockedIsRestoredByItsTokenWhenItIsUnlocked)
{
    obtainConsent("a1");
    side.whenLocked(true);
    side.whenLost(Loss::closed);
    EXPECT_EQ(calls(), "close");
    side.whenLocked(false);
    answerUpToTheDialog();
    answer(consent("b2"));
    EXPECT_EQ(calls(), "version|create|pointer mode 1 token a1|monitor|start");
    EXPECT_EQ(status, "");
    side.whenLocked(false); // of another interface
    EXPECT_EQ(calls(), "");
}

TEST_F(RemoteDesktopPointerTest, WhatIsClosed5SecondsBeforeTheScreenIsLockedIsRestored)
{
    obtainConsent("a1");
    side.whenLost(Loss::closed);
    now += 5s;
    side.whenLocked(true);
    EXPECT_EQ(calls(), "close");
    now += 2h;
    side.whenLocked(false);
    EXPECT_EQ(calls(), "version");
}

TEST_F(RemoteDesktopPointerTest, WhatIsStoppedEarlierThanThatStaysStoppedUntilTouchesBeginAgain)
{
    obtainConsent("a1");
    side.whenLost(Loss::closed);
    now += 5001ms;
    side.whenLocked(true);
    side.whenLocked(false);
    expectDropped("the desktop stopped sharing the screen");
    EXPECT_EQ(calls(), "close");
    pointer->touchesBegin();
    EXPECT_EQ(calls(), "version");
}

TEST_F(RemoteDesktopPointerTest, WhatIsStoppedAfterTheScreenWasUnlockedStaysStopped)
{
    obtainConsent("a1");
    side.whenLocked(true);
    side.whenLocked(false);
    side.whenLost(Loss::closed);
    EXPECT_EQ(calls(), "close");
}

TEST_F(RemoteDesktopPointerTest, ASessionWithoutATokenIsNotRestored)
{
    obtainConsent();
    side.whenLocked(true);
    side.whenLost(Loss::closed);
    side.whenLocked(false);
    expectDropped("the desktop stopped sharing the screen");
    EXPECT_EQ(calls(), "close");
}

TEST_F(RemoteDesktopPointerTest, ALockThatClosesADialogAsksNothingWhenItEnds)
{
    obtainConsent("a1");
    side.whenLost(Loss::portalGone);
    now += 1min;
    ask();
    calls();
    side.whenLocked(true);
    side.whenLost(Loss::closed);
    side.whenLocked(false);
    EXPECT_EQ(calls(), "close");
}

TEST_F(RemoteDesktopPointerTest, ARestoreThatIsRefusedIsTriedOnce)
{
    obtainConsent("a1");
    side.whenLocked(true);
    side.whenLost(Loss::closed);
    side.whenLocked(false);
    answerUpToTheDialog();
    answer(answerOfKind(Kind::cancelled));
    expectDropped("the desktop's dialog was cancelled");
    calls();
    side.whenLocked(true);
    side.whenLocked(false);
    EXPECT_EQ(calls(), "");
}

TEST_F(RemoteDesktopPointerTest, ACallThatIsRefusedAfterALockRestoresTheSession)
{
    obtainConsent("a1");
    side.whenLocked(true);
    side.whenLocked(false);
    pointer->setLeftButtonDown(true);
    side.notified.front()("Invalid session");
    EXPECT_EQ(calls(), "down|close|version");
}

TEST_F(RemoteDesktopPointerTest, ACallThatIsRefusedAfterOneThatWasTakenSinceTheLockRestoresNothing)
{
    obtainConsent("a1");
    side.whenLocked(true);
    side.whenLocked(false);
    pointer->setLeftButtonDown(true);
    pointer->setLeftButtonDown(false);
    side.notified.front()("");
    side.notified.back()("Invalid session");
    EXPECT_EQ(calls(), "down|up|close");
}

TEST_F(RemoteDesktopPointerTest, TheSessionIsClosedWithThePointer)
{
    obtainConsent();
    pointer.reset();
    EXPECT_EQ(calls(), "close");
}

TEST_F(RemoteDesktopPointerTest, ATokenThatIsKeptOnDiskIsAskedForWithMode2)
{
    pointer = std::make_unique<RemoteDesktopPointer>(std::make_unique<FakePortal>(side), screen,
        RestoreToken(::testing::TempDir() + "no-such-folder/token"), [](const std::string&) {});
    side.calls.clear();
    ask();
    EXPECT_EQ(calls(), "version|create|pointer mode 2 token |monitor|start");
}

} // namespace companion::testing
