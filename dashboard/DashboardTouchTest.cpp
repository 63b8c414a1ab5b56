#include "dashboard/testing/DashboardTest.h"

#include <gmock/gmock.h>

namespace companion::testing {

namespace {

using namespace std::chrono_literals;

const std::string shortRecordLine = "log A touch record with fewer than four fields was dropped";

class DashboardTouchTest : public DashboardTest {
protected:
    DashboardTouchTest() { load(); }

    void openTouchPort()
    {
        pickRoom204();
        dashboard->castButtonClicked();
        transcript.clear();
    }

    std::string receive(std::string_view datagram, const std::string& host = "192.168.1.20")
    {
        EXPECT_TRUE(sockets.deliver(datagram, {host, 50000}));
        return transcript.take("; ");
    }

    void useTouchSource(TouchSource source)
    {
        dashboard.reset();
        touchSource = source;
        load();
    }
};

} // namespace

TEST_F(DashboardTouchTest, WithTheSwitchOffAndNoCastingNoSocketIsMade)
{
    dashboard->initiateTouchBack();
    EXPECT_EQ(transcript.take(), "");
}

TEST_F(DashboardTouchTest, EnablingStillAsksThePanelWhenNoSocketIsMade)
{
    pickRoom204();
    transcript.clear();
    dashboard->initiateHDMITouchbackEnabled(/*enabled=*/true, /*isHDMI=*/true);
    EXPECT_EQ(transcript.take(),
        "send 10.0.2.15:5000/enableWifiTouchback?ip=192.168.1.5&enable=true&hidemenu=false&isHDMI=true");
}

TEST_F(DashboardTouchTest, TheSwitchAloneOpensTheTouchPort)
{
    view.wirelessTouchSwitch().setChecked(true);
    transcript.clear();
    dashboard->initiateTouchBack();
    EXPECT_EQ(transcript.take("; "),
        "make client udp socket; enable broadcast; bind 41863; begin receiving; log Socket Ready");
    EXPECT_TRUE(dashboard->isTouchBackEnabled());
}

TEST_F(DashboardTouchTest, ASocketConnectedToPort41863IsNotBoundAndOneConnectedToPort41862Is)
{
    view.wirelessTouchSwitch().setChecked(true);
    sockets.connectedPort = 41863;
    transcript.clear();
    dashboard->initiateTouchBack();
    EXPECT_EQ(
        transcript.take("; "), "make client udp socket; enable broadcast; begin receiving; log Socket Ready");

    sockets.connectedPort = 41862;
    dashboard->initiateTouchBack();
    EXPECT_THAT(transcript.lines(), ::testing::Contains("bind 41863"));
}

TEST_F(DashboardTouchTest, TouchesBeginOnceThePortIsOpenAndNotWhenItCannotBeBound)
{
    view.wirelessTouchSwitch().setChecked(true);
    sockets.bindError = "Address already in use";
    dashboard->initiateTouchBack();
    EXPECT_EQ(poster.touchesBegan, 0);
    sockets.bindError.reset();
    dashboard->initiateTouchBack();
    EXPECT_EQ(poster.touchesBegan, 1);
}

TEST_F(DashboardTouchTest, TheHeldButtonIsReleasedWhenTheSwitchIsTurnedOffAlthoughTheSocketStaysOpen)
{
    pickRoom204();
    clickSwitch();
    poster.touchesEnded = 0;
    clickSwitch();
    EXPECT_EQ(poster.touchesEnded, 1);
}

TEST_F(DashboardTouchTest, TheHeldButtonIsReleasedWhenCastingStopsOrThePanelIsUnpaired)
{
    openTouchPort();
    poster.touchesEnded = 0;
    dashboard->stopScreenCast();
    EXPECT_EQ(poster.touchesEnded, 1);
    poster.touchesEnded = 0;
    dashboard->deviceDisconnecetd();
    EXPECT_EQ(poster.touchesEnded, 1);
}

TEST_F(DashboardTouchTest, DisablingLeavesTheSocketOpenAndItsTouchesCount)
{
    pickRoom204();
    clickSwitch();
    clickSwitch();
    transcript.clear();
    EXPECT_EQ(receive("MOVE,100,200,5"), "drag; receive once");
    EXPECT_TRUE(dashboard->isTouchBackEnabled());
}

TEST_F(DashboardTouchTest, OpeningAgainBindsThePortThatTheOldSocketGaveBack)
{
    pickRoom204();
    clickSwitch();
    clickSwitch();
    dashboard->castButtonClicked();
    EXPECT_THAT(transcript.lines(), ::testing::Contains("log Socket Ready").Times(2));
    EXPECT_EQ(sockets.openSockets(), 1u);
    dashboard->initiateTouchBack();
    EXPECT_THAT(transcript.lines(), ::testing::Contains("log Socket Ready").Times(3));
    EXPECT_EQ(sockets.openSockets(), 1u);
}

TEST_F(DashboardTouchTest, AFailureToBroadcastStopsBeforeTheBind)
{
    sockets.broadcastError = "not permitted";
    view.wirelessTouchSwitch().setChecked(true);
    transcript.clear();
    dashboard->initiateTouchBack();
    EXPECT_EQ(transcript.take("; "),
        "make client udp socket; enable broadcast; log Error enabling broadcasting: not permitted");
    EXPECT_FALSE(dashboard->isTouchBackEnabled());
}

TEST_F(DashboardTouchTest, APortThatIsTakenStopsBeforeReceiving)
{
    sockets.bindError = "Address already in use";
    view.wirelessTouchSwitch().setChecked(true);
    transcript.clear();
    dashboard->initiateTouchBack();
    EXPECT_EQ(transcript.take("; "),
        "make client udp socket; enable broadcast; bind 41863; log Error binding to port: Address already in "
        "use");
    EXPECT_FALSE(dashboard->isTouchBackEnabled());
    EXPECT_EQ(sockets.openSockets(), 1u) << "the unusable socket is kept until the next one";
}

TEST_F(DashboardTouchTest, AFailureToReceiveIsLoggedAndLeavesTheStatusFlag)
{
    sockets.receiveError = "no buffer";
    view.wirelessTouchSwitch().setChecked(true);
    transcript.clear();
    dashboard->initiateTouchBack();
    EXPECT_EQ(transcript.take("; "),
        "make client udp socket; enable broadcast; bind 41863; begin receiving; log Error receiving: no "
        "buffer");
    EXPECT_FALSE(dashboard->isTouchBackEnabled());
}

TEST_F(DashboardTouchTest, TheStatusFlagIsNeverTakenBack)
{
    openTouchPort();
    dashboard->castButtonClicked();
    sockets.bindError = "Address already in use";
    dashboard->castButtonClicked();
    EXPECT_TRUE(dashboard->isTouchBackEnabled());
}

TEST_F(DashboardTouchTest, ClosingClosesAnOpenSocketAndThenStopsAndSaysSo)
{
    openTouchPort();
    dashboard->closeTouchBack();
    EXPECT_EQ(transcript.take("; "),
        "close; log Casting stopped: touchback was closed; log Stopping server ping...; close; "
        "cast image castingInactive; "
        "alert Touchback is disabled now.");
    dashboard->closeTouchBack();
    EXPECT_EQ(transcript.take("; "), "close; cast image castingInactive; alert Touchback is disabled now.");
}

TEST_F(DashboardTouchTest, ClosingWithNoSocketStillStopsAndSaysSo)
{
    dashboard->closeTouchBack();
    EXPECT_EQ(transcript.take("; "), "cast image castingInactive; alert Touchback is disabled now.");
}

TEST_F(DashboardTouchTest, NothingIsReceivedAfterAStop)
{
    openTouchPort();
    dashboard->castButtonClicked();
    EXPECT_FALSE(sockets.deliver("MOVE,100,200,5"));
}

TEST_F(DashboardTouchTest, ATouchBecomesAnEventAtItsPlaceOnTheScreen)
{
    openTouchPort();
    EXPECT_EQ(receive("MOVE,16383,8191,1712345"), "drag; receive once");
    ASSERT_EQ(poster.posted.size(), 1u);
    EXPECT_NEAR(poster.posted[0].at.x, 16383 / 32767.0 * 1366, 0.1);
    EXPECT_NEAR(poster.posted[0].at.y, 8191 / 32767.0 * 768, 0.1);
}

TEST_F(DashboardTouchTest, WhatFollowsASemicolonOrTheFourthFieldIsDropped)
{
    openTouchPort();
    receive("MOVE,100,200,5");
    EXPECT_EQ(receive("MOVE,100,200,5;MOVE,1,1,6"), "drag; receive once");
    EXPECT_EQ(receive("MOVE,100,200,5,extra"), "drag; receive once");
    ASSERT_EQ(poster.posted.size(), 3u);
    EXPECT_EQ(poster.posted[1].at, poster.posted[0].at);
    EXPECT_EQ(poster.posted[2].at, poster.posted[0].at);
}

TEST_F(DashboardTouchTest, RecordsThatAreNoTouchesAreDroppedSilentlyAndReceptionStaysArmed)
{
    openTouchPort();
    for (const std::string_view record : {"MOVE,1x,2,3", "TAP,100,200,5", "move,100,200,5", "MOVE, 1,2,3",
             ",,,", "\xFF\xFE", "MOVE,100,200,\xC3", "MOVE,nan,200,5"})
        EXPECT_EQ(receive(record), "receive once") << record;
}

TEST_F(DashboardTouchTest, AShortRecordIsDroppedWithOneLineAndReceptionStaysArmed)
{
    openTouchPort();
    for (const std::string_view record : {";", "", "MOVE", "MOVE,1,2", ";MOVE,1,2,3"}) {
        clock.seconds += 1;
        EXPECT_EQ(receive(record), shortRecordLine + "; receive once") << record;
    }
    EXPECT_EQ(screen.queries, 0);
}

TEST_F(DashboardTouchTest, ShortRecordsAreLoggedAtMostOnceASecond)
{
    openTouchPort();
    clock.seconds = 1'000'000;
    EXPECT_EQ(receive(";"), shortRecordLine + "; receive once");
    EXPECT_EQ(receive(";"), "receive once");
    clock.seconds = 1'000'000.999;
    EXPECT_EQ(receive(";"), "receive once");
    clock.seconds = 1'000'001;
    EXPECT_EQ(receive(";"), shortRecordLine + "; receive once");
    clock.seconds = 1'000'001.999;
    EXPECT_EQ(receive(";"), "receive once");
}

TEST_F(DashboardTouchTest, AClockSetBackDoesNotSilenceTheLine)
{
    openTouchPort();
    receive(";");
    clock.seconds -= 3600;
    EXPECT_EQ(receive(";"), shortRecordLine + "; receive once");
}

TEST_F(DashboardTouchTest, TheClickStateOutlivesTheSocket)
{
    openTouchPort();
    receive("UP,100,200,5");
    dashboard->castButtonClicked();
    dashboard->castButtonClicked();
    transcript.clear();
    clock.seconds += 0.5;
    EXPECT_EQ(receive("UP,100,200,5"), "down1; up1; pause 1000us; down2; up2; receive once");
}

TEST_F(DashboardTouchTest, TouchesOfEverybodyCountByDefault)
{
    openTouchPort();
    EXPECT_EQ(receive("MOVE,100,200,5", "172.16.0.9"), "drag; receive once");
}

TEST_F(DashboardTouchTest, WithTheSourcePanelOnlyItsOwnTouchesCountAndReceptionStaysArmed)
{
    useTouchSource(TouchSource::panel);
    openTouchPort();
    EXPECT_EQ(receive("MOVE,100,200,5", "10.0.2.15"), "drag; receive once");
    for (const std::string host : {"10.0.2.1", "10.0.2.151", "", "fe80::1"}) {
        EXPECT_EQ(receive("MOVE,100,200,5", host), "receive once") << host;
        EXPECT_EQ(receive(";", host), "receive once") << host;
    }
}

TEST_F(DashboardTouchTest, WithTheSourcePanelAndNoPanelPairedNoTouchCounts)
{
    useTouchSource(TouchSource::panel);
    takeLocalAddressAway();
    clickSwitch();
    transcript.clear();
    EXPECT_EQ(receive("MOVE,100,200,5", "10.0.2.15"), "receive once");
    EXPECT_EQ(receive("MOVE,100,200,5", ""), "receive once");
}

} // namespace companion::testing
