#include "dashboard/testing/DashboardTest.h"

namespace companion::testing {

namespace {

enum class State { noDevice, paired, casting, hdmiTouch };
enum class Event {
    pick,
    castButton,
    drop,
    switchClick,
    tick,
    castOffReply,
    busyReply,
    anyOtherReply,
    firstFailure,
    secondFailure
};

struct Step {
    State from;
    Event event;
    State to;
    std::string transcript;
    std::string shownPanes;
    bool hasLocalAddress = true;
};

const std::string pickSteps =
    "status Paired to C0A80105; show fileUpload; show hdmiToggle; show castButton; hide emptyStateImage";
const std::string newSocket =
    "make client udp socket; enable broadcast; bind 41863; begin receiving; log Socket Ready; ";
const std::string replacedSocket = "destroy socket; " + newSocket;
const std::string enableUrl = "send 10.0.2.15:5000/enableWifiTouchback?ip=192.168.1.5";
const std::string castOn = enableUrl + "&enable=true&hidemenu=false&isHDMI=false; ";
const std::string allOff = enableUrl + "&enable=false&hidemenu=true&isHDMI=false; ";
const std::string hdmiOn = enableUrl + "&enable=true&hidemenu=false&isHDMI=true; ";
const std::string hdmiOff = enableUrl + "&enable=false&hidemenu=true&isHDMI=true; ";
const std::string startAlert = "alert Touchback is enabled now.";
const std::string stopAlert = "alert Touchback is disabled now.";
const std::string castingStopped = "log Casting stopped: ";
const std::string hdmiStopped = "log Touch over HDMI stopped: ";
const std::string byButton = "the cast button was pressed; ";
const std::string byDisconnect = "the panel was disconnected; ";
const std::string byCastOff = "the panel reported CAST_OFF; ";
const std::string byBusy = "the panel is busy; ";
const std::string byFailures = "two heartbeats failed; ";
const std::string startPing = "log Starting server ping...; ";
const std::string stopPing = "log Stopping server ping...; ";
const std::string closeSocket = "close; cast image castingInactive";
const std::string castingLooks = "hide hdmiToggle; cast image castingActive";
const std::string oneBeat = "log Pinging...; send 10.0.2.15:5000/pingServerWithIP?ip=192.168.1.5&msg=ping";
const std::string unpaired = "status *No Device Connected; hide hdmiToggle; hide hdmiMessage; switch off; "
                             "hide fileUpload; hide castButton; show emptyStateImage";
const std::string cleanUp = closeSocket
    + "; show hdmiToggle; show fileUpload; show castButton; hide emptyStateImage; hide hdmiMessage; switch "
      "off";
const std::string switchedOn =
    "hide fileUpload; hide castButton; hide emptyStateImage; show hdmiMessage; switch on";
const std::string switchedOff =
    "show fileUpload; show castButton; hide emptyStateImage; hide hdmiMessage; switch off";
const std::string busyAlert = "; alert Device busy";
const std::string networkAlert = "; alert Network error";

const std::string nothingPaired = "emptyStateImage";
const std::string panelPaired = "castButton fileUpload hdmiToggle";
const std::string castingPanes = "castButton fileUpload";
const std::string hdmiPanes = "hdmiMessage hdmiToggle";

// Before the first step, a session has run for 8 seconds: two of its heartbeats are still unanswered. Where no
// panel is paired, most events would lead to a request without an address, which is fatal (see below); without a
// local address there is no request.
const Step steps[] = {
    {State::noDevice, Event::pick, State::paired, pickSteps, panelPaired},
    {State::noDevice, Event::castButton, State::noDevice,
        "show hdmiToggle; " + closeSocket + "; " + stopAlert, "emptyStateImage hdmiToggle", false},
    {State::noDevice, Event::drop, State::noDevice, unpaired, nothingPaired, false},
    {State::noDevice, Event::switchClick, State::noDevice,
        "switch on; " + replacedSocket + startPing + switchedOn, "hdmiMessage", false},
    {State::noDevice, Event::tick, State::noDevice, "", nothingPaired},
    {State::noDevice, Event::castOffReply, State::noDevice, cleanUp, panelPaired},
    {State::noDevice, Event::busyReply, State::noDevice, cleanUp + busyAlert, panelPaired},
    {State::noDevice, Event::anyOtherReply, State::noDevice, "", nothingPaired},
    {State::noDevice, Event::firstFailure, State::noDevice, "log Ping failed", nothingPaired},
    {State::noDevice, Event::secondFailure, State::noDevice, "log Ping failed; " + cleanUp + networkAlert,
        panelPaired},

    {State::paired, Event::pick, State::paired, pickSteps, panelPaired},
    {State::paired, Event::castButton, State::casting,
        startAlert + "; " + replacedSocket + castOn + startPing + castingLooks, castingPanes},
    {State::paired, Event::drop, State::noDevice, allOff + unpaired, nothingPaired},
    {State::paired, Event::switchClick, State::hdmiTouch,
        "switch on; " + replacedSocket + hdmiOn + startPing + switchedOn, hdmiPanes},
    {State::paired, Event::tick, State::paired, "", panelPaired},
    {State::paired, Event::castOffReply, State::paired, cleanUp, panelPaired},
    {State::paired, Event::busyReply, State::paired, cleanUp + busyAlert, panelPaired},
    {State::paired, Event::anyOtherReply, State::paired, "", panelPaired},
    {State::paired, Event::firstFailure, State::paired, "log Ping failed", panelPaired},
    {State::paired, Event::secondFailure, State::paired, "log Ping failed; " + cleanUp + networkAlert,
        panelPaired},

    {State::casting, Event::pick, State::casting, pickSteps, panelPaired},
    {State::casting, Event::castButton, State::paired,
        "show hdmiToggle; " + allOff + castingStopped + byButton + stopPing + closeSocket + "; " + stopAlert,
        panelPaired},
    {State::casting, Event::drop, State::noDevice,
        castingStopped + byDisconnect + stopPing + closeSocket + "; " + stopAlert + "; " + allOff + unpaired,
        nothingPaired},
    {State::casting, Event::switchClick, State::casting, "switch on; " + replacedSocket + hdmiOn + switchedOn,
        "hdmiMessage"},
    {State::casting, Event::tick, State::casting, oneBeat, castingPanes},
    {State::casting, Event::castOffReply, State::paired, castingStopped + byCastOff + stopPing + cleanUp,
        panelPaired},
    {State::casting, Event::busyReply, State::paired,
        castingStopped + byBusy + stopPing + cleanUp + busyAlert, panelPaired},
    {State::casting, Event::anyOtherReply, State::casting, "", castingPanes},
    {State::casting, Event::firstFailure, State::casting, "log Ping failed", castingPanes},
    {State::casting, Event::secondFailure, State::paired,
        "log Ping failed; " + castingStopped + byFailures + stopPing + cleanUp + networkAlert, panelPaired},

    {State::hdmiTouch, Event::pick, State::hdmiTouch, pickSteps,
        "castButton fileUpload hdmiMessage hdmiToggle"},
    {State::hdmiTouch, Event::castButton, State::casting,
        startAlert + "; " + replacedSocket + castOn + castingLooks, "hdmiMessage"},
    {State::hdmiTouch, Event::drop, State::noDevice, allOff + unpaired, nothingPaired},
    {State::hdmiTouch, Event::switchClick, State::paired, "switch off; " + hdmiOff + stopPing + switchedOff,
        panelPaired},
    {State::hdmiTouch, Event::tick, State::hdmiTouch, oneBeat, hdmiPanes},
    {State::hdmiTouch, Event::castOffReply, State::paired, hdmiStopped + byCastOff + stopPing + cleanUp,
        panelPaired},
    {State::hdmiTouch, Event::busyReply, State::paired, hdmiStopped + byBusy + stopPing + cleanUp + busyAlert,
        panelPaired},
    {State::hdmiTouch, Event::anyOtherReply, State::hdmiTouch, "", hdmiPanes},
    {State::hdmiTouch, Event::firstFailure, State::hdmiTouch, "log Ping failed", hdmiPanes},
    {State::hdmiTouch, Event::secondFailure, State::paired,
        "log Ping failed; " + hdmiStopped + byFailures + stopPing + cleanUp + networkAlert, panelPaired},
};

const char* nameOf(State state)
{
    const char* names[] = {"NoDevice", "Paired", "Casting", "HdmiTouch"};
    return names[static_cast<int>(state)];
}

const char* nameOf(Event event)
{
    const char* names[] = {"Pick", "CastButton", "Drop", "SwitchClick", "Tick", "CastOffReply", "BusyReply",
        "AnyOtherReply", "FirstFailure", "SecondFailure"};
    return names[static_cast<int>(event)];
}

class DashboardStatesTest : public DashboardTest, public ::testing::WithParamInterface<Step> {
protected:
    void enter(State state)
    {
        load();
        pickRoom204();
        if (state == State::hdmiTouch)
            clickSwitch();
        else
            dashboard->castButtonClicked();
        queue.advance(std::chrono::seconds(8));
        if (state == State::paired)
            dashboard->castButtonClicked();
        if (state == State::noDevice)
            dashboard->deviceDisconnecetd();
        transcript.clear();
    }

    void handle(Event event)
    {
        switch (event) {
        case Event::pick:
            dashboard->didPickCastingDeviceWithIP("192.168.1.5", "C0A80105", "Hall");
            break;
        case Event::castButton:
            dashboard->castButtonClicked();
            break;
        case Event::drop:
            dashboard->deviceDisconnecetd();
            break;
        case Event::switchClick:
            clickSwitch();
            break;
        case Event::tick:
            queue.advance(std::chrono::seconds(4));
            break;
        default:
            reply(event);
        }
        queue.runPending();
    }

    void reply(Event event)
    {
        if (event == Event::secondFailure) {
            failPing(1);
            queue.runPending();
            transcript.clear();
        }
        if (event == Event::castOffReply)
            answer(0, "... CAST_OFF ...");
        else if (event == Event::busyReply)
            answer(0, "Device is busy");
        else if (event == Event::anyOtherReply)
            answer(0, "pong");
        else
            failPing(0);
    }

    State state()
    {
        if (!dashboard->selectedDeviceIPAddress())
            return State::noDevice;
        if (dashboard->isCastingInProgress())
            return State::casting;
        return view.wirelessTouchSwitch().checked() ? State::hdmiTouch : State::paired;
    }
};

} // namespace

TEST_P(DashboardStatesTest, EveryEventInEveryStateLeadsToTheNextStateByItsSteps)
{
    enter(GetParam().from);
    ASSERT_EQ(state(), GetParam().from);
    if (!GetParam().hasLocalAddress)
        takeLocalAddressAway();

    handle(GetParam().event);
    EXPECT_STREQ(nameOf(state()), nameOf(GetParam().to));
    EXPECT_EQ(transcript.take("; "), GetParam().transcript);
    EXPECT_EQ(view.shownPanes(), GetParam().shownPanes);
}

INSTANTIATE_TEST_SUITE_P(Steps, DashboardStatesTest, ::testing::ValuesIn(steps),
    [](const auto& step) { return std::string(nameOf(step.param.from)) + nameOf(step.param.event); });

} // namespace companion::testing
