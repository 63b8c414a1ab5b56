#include "dashboard/testing/DashboardTest.h"

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

namespace companion::testing {

namespace {

using namespace std::chrono_literals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class DashboardViewControllerTest : public DashboardTest {
protected:
    DashboardViewControllerTest() { load(); }

    void startCasting()
    {
        pickRoom204();
        dashboard->castButtonClicked();
    }

    std::string requests()
    {
        std::string text;
        for (const std::string& line : transcript.lines()) {
            if (line.starts_with("send"))
                text += line + "\n";
        }
        return text;
    }
};

/// Lets two threads that log a failed ping go on at the same moment.
class MeetingLog : public SystemLog {
public:
    void log(std::string_view line) override
    {
        if (line != "Ping failed")
            return;
        const int arrival = m_arrivals++;
        while (m_arrivals < arrival / 2 * 2 + 2)
            std::this_thread::yield();
    }

private:
    std::atomic<int> m_arrivals = 0;
};

using DashboardDeathTest = DashboardViewControllerTest;

} // namespace

TEST_F(DashboardViewControllerTest, LoadingHidesWhatNeedsAPanelAndUnchecksTheSwitch)
{
    EXPECT_EQ(transcriptOfLoading,
        "cast image castingInactive; drop image fileUploadGrid; switch off; hide hdmiToggle; hide "
        "fileUpload; hide castButton; "
        "hide hdmiMessage");
    EXPECT_EQ(view.shownPanes(), "emptyStateImage");
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_FALSE(dashboard->isTouchBackEnabled());
    EXPECT_FALSE(dashboard->isFileUploadEnabled());
    EXPECT_EQ(dashboard->serverPingFailedCount(), 0);
    EXPECT_EQ(dashboard->selectedDeviceIPAddress(), std::nullopt);
    EXPECT_EQ(dashboard->selectedDeviceName(), std::nullopt);
    EXPECT_EQ(dashboard->selectedDeviceHex(), std::nullopt);
}

TEST_F(DashboardViewControllerTest, LoadingResetsTheFlagsAndTheFailureCount)
{
    startCasting();
    queue.advance(4s);
    failPing(0);
    ASSERT_TRUE(dashboard->isCastingInProgress());
    ASSERT_TRUE(dashboard->isTouchBackEnabled());
    ASSERT_EQ(dashboard->serverPingFailedCount(), 1);
    dashboard->viewDidLoad();
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_FALSE(dashboard->isTouchBackEnabled());
    EXPECT_EQ(dashboard->serverPingFailedCount(), 0);
}

TEST_F(DashboardViewControllerTest, TurningTheSwitchOffWhileCastingStopsTheHeartbeatAndLeavesCastingOn)
{
    startCasting();
    clickSwitch();
    transcript.clear();
    clickSwitch();
    EXPECT_EQ(transcript.take("; "),
        "switch off; send 10.0.2.15:5000/enableWifiTouchback?ip=192.168.1.5&enable=false&hidemenu=true&isHDMI="
        "true; log Stopping server ping...; show fileUpload; show castButton; hide emptyStateImage; "
        "hide hdmiMessage; switch off");
    EXPECT_TRUE(dashboard->isCastingInProgress());
    EXPECT_EQ(queue.runningTimers(), 0u);
    EXPECT_EQ(sockets.openSockets(), 1u);
}

TEST_F(DashboardViewControllerTest, APickStoresThePanelAndSendsNothing)
{
    dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0a00020F99", "Room 204");
    EXPECT_EQ(dashboard->selectedDeviceIPAddress(), "10.0.2.15");
    EXPECT_EQ(dashboard->selectedDeviceHex(), "0a00020F99");
    EXPECT_EQ(dashboard->selectedDeviceName(), "Room 204");
    EXPECT_EQ(transcript.take("; "),
        "status Paired to 0a00020F99; show fileUpload; show hdmiToggle; show castButton; hide "
        "emptyStateImage");
    EXPECT_THAT(http.sent(), IsEmpty());
    EXPECT_EQ(queue.runningTimers(), 0u);
}

TEST_F(DashboardViewControllerTest, APanelWhoseNameHoldsHalcyonXInTheseLettersTakesNoFiles)
{
    const struct {
        std::string name;
        bool takesFiles;
    } cases[] = {{"Room 204", true}, {"Halcyon-X", false}, {"The Halcyon-X upstairs", false},
        {"halcyon-x", true}, {"HALCYON-X", true}, {"Halcyon X", true}, {"", true}};
    for (const auto& [name, takesFiles] : cases) {
        dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", name);
        EXPECT_EQ(dashboard->isFileUploadEnabled(), takesFiles) << name;
    }
}

TEST_F(DashboardViewControllerTest, ADropKeepsNameHexAndTheUploadGate)
{
    pickRoom204();
    dashboard->deviceDisconnecetd();
    EXPECT_EQ(dashboard->selectedDeviceIPAddress(), std::nullopt);
    EXPECT_EQ(dashboard->selectedDeviceName(), "Room 204");
    EXPECT_EQ(dashboard->selectedDeviceHex(), "0A00020F");
    EXPECT_TRUE(dashboard->isFileUploadEnabled());
}

TEST_F(DashboardViewControllerTest, TurningTheSwitchOffDecidesTheUploadGateByTheName)
{
    dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", "Halcyon-X 2");
    clickSwitch();
    clickSwitch();
    EXPECT_FALSE(dashboard->isFileUploadEnabled());
}

TEST_F(DashboardViewControllerTest, TurningTheSwitchOffWithNoPanelEverPairedOpensTheUploadGate)
{
    takeLocalAddressAway();
    clickSwitch();
    EXPECT_FALSE(dashboard->isFileUploadEnabled());
    clickSwitch();
    EXPECT_TRUE(dashboard->isFileUploadEnabled());
}

TEST_F(DashboardViewControllerTest, TheTextsOfTheAlertsAreToTheLetter)
{
    startCasting();
    dashboard->castButtonClicked();
    dashboard->castButtonClicked();
    queue.advance(8s);
    failPing(0);
    failPing(1);
    queue.runPending();
    dashboard->castButtonClicked();
    queue.advance(4s);
    answer(2, "Device is busy");
    queue.runPending();

    ASSERT_THAT(alertMessages(),
        ElementsAre("Touchback is enabled now.", "Touchback is disabled now.", "Touchback is enabled now.",
            "Network error", "Touchback is enabled now.", "Device busy"));
    EXPECT_EQ(alerts.shown[0].informativeText,
        "To mirror the screen, please go to the AirPlay option on the top menu bar and select the required "
        "AirPlay display device.\n\nNOTE: Make sure the screen calibration is done and your mac and device "
        "are on "
        "the same network.");
    EXPECT_EQ(alerts.shown[1].informativeText,
        "If screen mirroring is ON and you don't need it anymore, please go to the AirPlay option on the top "
        "menu "
        "bar and select 'Stop AirPlay'.");
    EXPECT_EQ(alerts.shown[3].informativeText,
        "Touchback is disabled. Please check your network connection and then retry.");
    EXPECT_EQ(alerts.shown[5].informativeText, "Device is currently busy. Please try again.");
}

TEST_F(DashboardViewControllerTest, CastingBeginsOnlyOnceTheInstructionsAreDismissed)
{
    pickRoom204();
    bool wasShown = false;
    alerts.whileShown = [&] {
        wasShown = true;
        EXPECT_FALSE(dashboard->isCastingInProgress());
        EXPECT_EQ(sockets.openSockets(), 0u);
        EXPECT_THAT(http.sent(), IsEmpty());
        EXPECT_EQ(queue.runningTimers(), 0u);
    };
    dashboard->castButtonClicked();
    EXPECT_TRUE(wasShown);
    EXPECT_TRUE(dashboard->isCastingInProgress());
}

TEST_F(DashboardViewControllerTest, AProgramThatEndsWithTheInstructionsOpenBeginsNoCasting)
{
    pickRoom204();
    alerts.answer = false;
    dashboard->castButtonClicked();
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_EQ(sockets.openSockets(), 0u);
    EXPECT_THAT(http.sent(), IsEmpty());
    EXPECT_EQ(queue.runningTimers(), 0u);
}

TEST_F(DashboardViewControllerTest, AProgramThatEndsWithTheStopAlertOfADropOpenSendsNothingMore)
{
    startCasting();
    const std::size_t sent = http.sent().size();
    alerts.answer = false;
    dashboard->deviceDisconnecetd();
    EXPECT_EQ(http.sent().size(), sent);
}

TEST_F(DashboardViewControllerTest, TheHeartbeatRunsOnlyBetweenTwoClicksOnTheCastButton)
{
    startCasting();
    EXPECT_EQ(queue.runningTimers(), 1u);
    dashboard->castButtonClicked();
    EXPECT_EQ(queue.runningTimers(), 0u);
}

TEST_F(DashboardViewControllerTest, TheFirstHeartbeatComesAfter4SecondsAndThenEvery4Seconds)
{
    startCasting();
    queue.advance(4s - 1ns);
    EXPECT_EQ(pings().size(), 0u);
    queue.advance(1ns);
    EXPECT_EQ(pings().size(), 1u);
    queue.advance(4s - 1ns);
    EXPECT_EQ(pings().size(), 1u);
    queue.advance(1ns);
    EXPECT_EQ(pings().size(), 2u);
    queue.advance(60s);
    EXPECT_EQ(pings().size(), 17u) << "none of them waits for an answer";
}

TEST_F(DashboardViewControllerTest, StartingARunningHeartbeatLeavesItsRhythm)
{
    startCasting();
    queue.advance(3s);
    transcript.clear();
    dashboard->startServerPing();
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(queue.runningTimers(), 1u);
    queue.advance(1s);
    EXPECT_EQ(pings().size(), 1u);
}

TEST_F(DashboardViewControllerTest, AHeartbeatStoppedAndStartedBeginsIts4SecondsAnew)
{
    startCasting();
    queue.advance(3s);
    dashboard->stopServerPing();
    dashboard->startServerPing();
    queue.advance(4s - 1ns);
    EXPECT_EQ(pings().size(), 0u);
    queue.advance(1ns);
    EXPECT_EQ(pings().size(), 1u);
}

TEST_F(DashboardViewControllerTest, SuccessesDoNotResetTheCountOfFailures)
{
    startCasting();
    queue.advance(12s);
    failPing(0);
    answer(1, "pong");
    queue.runPending();
    EXPECT_EQ(dashboard->serverPingFailedCount(), 1);
    EXPECT_TRUE(dashboard->isCastingInProgress());
    failPing(2);
    EXPECT_TRUE(dashboard->isCastingInProgress()) << "the clean-up waits for the main queue";
    queue.runPending();
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_EQ(dashboard->serverPingFailedCount(), 0);
}

TEST_F(DashboardViewControllerTest, OnlyTheFailureThatMakesItTwoEndsTheSession)
{
    startCasting();
    queue.advance(16s);
    for (std::size_t ping = 0; ping < 4; ++ping)
        failPing(ping);
    EXPECT_EQ(dashboard->serverPingFailedCount(), 4);
    queue.runPending();
    EXPECT_THAT(alertMessages(), ElementsAre("Touchback is enabled now.", "Network error"));
    EXPECT_TRUE(queue.isIdle());
}

TEST_F(DashboardViewControllerTest, AfterTwoFailuresTicksSendNothingUntilTheHeartbeatIsStopped)
{
    startCasting();
    queue.advance(8s);
    failPing(0);
    failPing(1);
    transcript.clear();
    dashboard->inititateServerPing();
    EXPECT_EQ(transcript.take(), "log Pinging...");
    dashboard->stopServerPing();
    dashboard->inititateServerPing();
    EXPECT_EQ(transcript.take(),
        "log Stopping server ping...\nlog Pinging...\n"
        "send 10.0.2.15:5000/pingServerWithIP?ip=192.168.1.5&msg=ping");
}

TEST_F(DashboardViewControllerTest, AfterALateFailureTheNextSessionEndsAtItsFirst)
{
    startCasting();
    queue.advance(4s);
    dashboard->castButtonClicked();
    failPing(0);
    dashboard->castButtonClicked();
    queue.advance(4s);
    failPing(1);
    queue.runPending();
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_EQ(alertMessages().back(), "Network error");
}

TEST_F(DashboardViewControllerTest, TwoLateFailuresShowTheAlertAndKeepTheNextSessionFromPinging)
{
    startCasting();
    queue.advance(8s);
    dashboard->castButtonClicked();
    failPing(0);
    failPing(1);
    queue.runPending();
    EXPECT_EQ(alertMessages().back(), "Network error");
    EXPECT_EQ(dashboard->serverPingFailedCount(), 2) << "without a running heartbeat nothing is reset";

    dashboard->castButtonClicked();
    transcript.clear();
    queue.advance(60s);
    EXPECT_EQ(pings().size(), 2u);
    EXPECT_EQ(requests(), "");
    EXPECT_TRUE(dashboard->isCastingInProgress());
}

TEST_F(DashboardViewControllerTest, ATransportFailureIsNotCounted)
{
    startCasting();
    queue.advance(40s);
    for (const std::size_t ping : pings())
        http.fail(ping, "connection refused");
    queue.runPending();
    EXPECT_EQ(dashboard->serverPingFailedCount(), 0);
    EXPECT_TRUE(dashboard->isCastingInProgress());
}

TEST_F(DashboardViewControllerTest, WithoutALocalAddressTheSecondTickEndsTheSessionOnceTheTickIsOver)
{
    startCasting();
    takeLocalAddressAway();
    transcript.clear();
    queue.advance(4s);
    EXPECT_EQ(transcript.take(), "log Pinging...\nlog Ping failed");
    dashboard->inititateServerPing();
    EXPECT_EQ(transcript.take(), "log Pinging...\nlog Ping failed");
    EXPECT_TRUE(dashboard->isCastingInProgress());
    queue.runPending();
    EXPECT_FALSE(dashboard->isCastingInProgress());
    EXPECT_EQ(alertMessages().back(), "Network error");
}

TEST_F(DashboardViewControllerTest, OnlyTheExactReplyTextsEndASession)
{
    startCasting();
    for (const std::string body : {"cast_off", "DEVICE_BUSY", "device is busy", ""}) {
        queue.advance(4s);
        answer(pings().size() - 1, body);
        queue.runPending();
        EXPECT_TRUE(dashboard->isCastingInProgress()) << body;
    }
}

TEST_F(DashboardViewControllerTest, CastOffInHdmiTouchTellsThePanelNothing)
{
    pickRoom204();
    clickSwitch();
    queue.advance(4s);
    answer(0, "CAST_OFF");
    transcript.clear();
    queue.runPending();
    EXPECT_FALSE(view.wirelessTouchSwitch().checked());
    EXPECT_EQ(requests(), "");
}

TEST_F(DashboardViewControllerTest, ThePanelThatIsPickedWhileCastingGetsTheNextHeartbeats)
{
    startCasting();
    queue.advance(4s);
    dashboard->didPickCastingDeviceWithIP("192.168.1.7", "C0A80107", "Hall");
    transcript.clear();
    queue.advance(4s);
    EXPECT_EQ(requests(), "send 192.168.1.7:5000/pingServerWithIP?ip=192.168.1.5&msg=ping\n");
    dashboard->castButtonClicked();
    EXPECT_THAT(requests(), ::testing::HasSubstr("send 192.168.1.7:5000/enableWifiTouchback"));
}

TEST_F(DashboardViewControllerTest, ADropInHdmiTouchLeavesTheHeartbeatRunning)
{
    pickRoom204();
    clickSwitch();
    dashboard->deviceDisconnecetd();
    EXPECT_EQ(queue.runningTimers(), 1u);
    takeLocalAddressAway();
    transcript.clear();
    queue.advance(4s);
    EXPECT_EQ(transcript.take(), "log Pinging...\nlog Ping failed");
}

TEST_F(DashboardDeathTest, AHeartbeatAfterADropInHdmiTouchIsFatalWithALocalAddress)
{
    pickRoom204();
    clickSwitch();
    dashboard->deviceDisconnecetd();
    EXPECT_DEATH(queue.advance(4s), "no panel address");
}

TEST_F(DashboardDeathTest, CastButtonDropAndSwitchWithoutAPanelAreFatalWithALocalAddress)
{
    EXPECT_DEATH(dashboard->castButtonClicked(), "no panel address");
    EXPECT_DEATH(dashboard->deviceDisconnecetd(), "no panel address");
    EXPECT_DEATH(clickSwitch(), "no panel address");
}

TEST_F(DashboardViewControllerTest, AFailureOnAnotherThreadIsCountedThereAndDealtWithOnTheMainQueue)
{
    startCasting();
    queue.advance(8s);
    transcript.clear();
    std::thread([&] {
        failPing(0);
        failPing(1);
    }).join();
    EXPECT_EQ(transcript.take(), "log Ping failed\nlog Ping failed");
    EXPECT_EQ(dashboard->serverPingFailedCount(), 2);
    EXPECT_TRUE(dashboard->isCastingInProgress());
    queue.runPending();
    EXPECT_FALSE(dashboard->isCastingInProgress());
}

TEST_F(DashboardViewControllerTest, FailuresOnTwoThreadsAtOnceEndTheSessionOnce)
{
    MeetingLog meetingLog;
    dashboard = DashboardViewController::make(
        {view, alerts, queue, meetingLog, PanelRequestHost{http, addresses, interfaceName, console},
            {sockets, clock, pause, screen, poster}, {fileChooser, fileReader, application, poster}, {}, {}});
    dashboard->viewDidLoad();
    for (int round = 0; round < 500; ++round) {
        startCasting();
        const std::size_t first = pings().size();
        queue.advance(8s);
        std::thread one([&] { failPing(first); });
        std::thread other([&] { failPing(first + 1); });
        one.join();
        other.join();
        alerts.shown.clear();
        queue.runPending();
        ASSERT_THAT(alertMessages(), ElementsAre("Network error")) << "in round " << round;
    }
    dashboard.reset();
}

TEST_F(DashboardViewControllerTest, AFailureMayArriveWhileTheHeartbeatIsBeingStopped)
{
    for (int round = 0; round < 50; ++round) {
        pickRoom204();
        dashboard->startServerPing();
        const std::size_t ping = pings().size();
        queue.advance(4s);
        std::thread delivery([&] { failPing(ping); });
        dashboard->stopServerPing();
        delivery.join();
        ASSERT_LE(dashboard->serverPingFailedCount(), 1);
        dashboard->startServerPing();
        dashboard->stopServerPing();
        ASSERT_EQ(dashboard->serverPingFailedCount(), 0);
    }
}

TEST_F(DashboardViewControllerTest, AReplyKeepsTheControllerAliveUntilItIsDealtWith)
{
    startCasting();
    queue.advance(4s);
    transcript.clear();
    dashboard.reset();
    EXPECT_EQ(transcript.take(), "");
    answer(0, "CAST_OFF");
    EXPECT_EQ(transcript.take(), "") << "the job on the main queue holds it now";
    queue.runPending();
    EXPECT_EQ(sockets.openSockets(), 0u);
    EXPECT_EQ(transcript.lines().back(), "destroy socket");
    EXPECT_EQ(queue.runningTimers(), 0u);
}

TEST_F(DashboardViewControllerTest, AControllerWhoseLastReferenceDiesOnAnotherThreadIsDestroyedOnTheMainQueue)
{
    startCasting();
    queue.advance(4s);
    transcript.clear();
    const std::weak_ptr<DashboardViewController> weak = dashboard;
    dashboard.reset();
    std::thread([&] { answer(0, "pong"); }).join();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(transcript.take(), "");
    EXPECT_EQ(queue.runningTimers(), 1u);
    queue.runPending();
    EXPECT_EQ(transcript.take(), "destroy socket");
    EXPECT_EQ(queue.runningTimers(), 0u);
}

TEST_F(DashboardViewControllerTest, ATickThatComesBeforeThatDestructionSendsNothing)
{
    int ticks = 0;
    const auto justBeforeTheHeartbeat = queue.repeat(4s, [&] {
        if (++ticks < 2)
            return;
        dashboard.reset();
        std::thread([&] { answer(0, "pong"); }).join();
    });
    startCasting();
    queue.advance(4s);
    const std::size_t sent = http.sent().size();
    queue.advance(4s);
    EXPECT_EQ(ticks, 2);
    EXPECT_EQ(http.sent().size(), sent);
    EXPECT_EQ(queue.runningTimers(), 1u);
}

TEST_F(DashboardViewControllerTest, OnTheMainThreadItIsDestroyedAtOnceAndTheSwitchActsNoMore)
{
    startCasting();
    transcript.clear();
    dashboard.reset();
    EXPECT_EQ(transcript.take(), "destroy socket");
    clickSwitch();
    EXPECT_EQ(transcript.take(), "switch on\nswitch on");
}

TEST_F(DashboardViewControllerTest, TheDeviceListIsMadeOnFirstUseAndKept)
{
    dashboard->devicesListIconClicked();
    EXPECT_EQ(transcript.take("; "),
        "reload; disconnect button 0; browse _airplay._tcp local.; present devices list");
    browsers.findAndResolve("Meridian 65|Room 204|0A00020F");
    DevicesListViewController* const first = view.devicesList;
    transcript.clear();
    dashboard->connectButtonClicked();
    EXPECT_EQ(transcript.take("; "), "present devices list");
    EXPECT_EQ(view.devicesList, first);
    EXPECT_EQ(view.devicesList->numberOfRows(), 1);
    EXPECT_EQ(devicesListsMade, 1);
}

TEST_F(DashboardViewControllerTest, TheDeviceListReportsToTheDashboardFromEveryOpeningOn)
{
    dashboard->connectButtonClicked();
    browsers.findAndResolve("Meridian 65|Room 204|0A00020F");
    view.devicesList->setDelegate({});
    dashboard->connectButtonClicked();
    devicesListView.rowOfClick = 0;
    view.devicesList->deviceClicked();
    EXPECT_EQ(dashboard->selectedDeviceIPAddress(), "10.0.2.15");
    view.devicesList->disconnectDevice();
    EXPECT_EQ(dashboard->selectedDeviceIPAddress(), std::nullopt);
}

TEST_F(DashboardViewControllerTest, SettingsAreMadeOnFirstUseAndKeepTheChoice)
{
    dashboard->settingsIconClicked();
    ASSERT_EQ(view.settings->fpsButton().titles.size(), 4u);
    view.settings->fpsButton().selectedIndex = 3;
    dashboard->settingsIconClicked();
    EXPECT_EQ(view.settings->fpsButton().selectedIndex, 3u);
    EXPECT_EQ(settingsMade, 1);
    EXPECT_EQ(transcript.take("; "), "present settings; present settings");
}

} // namespace companion::testing
