#pragma once

#include "dashboard/DashboardViewController.h"
#include "dashboard/testing/FakeDashboardView.h"
#include "discovery/testing/FakeDevicesListView.h"
#include "platform/testing/FakeAlerts.h"
#include "platform/testing/FakeApplication.h"
#include "platform/testing/FakeAsyncUdpSocket.h"
#include "platform/testing/FakeClock.h"
#include "platform/testing/FakeFileChooser.h"
#include "platform/testing/FakeFileReader.h"
#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/FakeMouseEventPoster.h"
#include "platform/testing/FakeScreen.h"
#include "platform/testing/FakeServiceBrowser.h"

#include <gtest/gtest.h>

namespace companion::testing {

/// Writes "send 10.0.2.15:5000/path?query" as well.
class TranscribingHttpSession : public FakeHttpSession {
public:
    explicit TranscribingHttpSession(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void send(HttpRequest request, HttpCompletion completion) override
    {
        m_transcript.add("send " + request.url.text.substr(std::string("http://").size()));
        FakeHttpSession::send(std::move(request), std::move(completion));
    }

private:
    Transcript& m_transcript;
};

/// A dashboard among fakes that all write one transcript, except the console, which has its own.
class DashboardTest : public ::testing::Test {
protected:
    ~DashboardTest() override { queue.runPending(); }

    void load()
    {
        dashboard = DashboardViewController::make(dependencies());
        dashboard->viewDidLoad();
        transcriptOfLoading = transcript.take("; ");
    }

    DashboardDependencies dependencies()
    {
        return {view, alerts, queue, log, PanelRequestHost{http, addresses, interfaceName, console},
            {sockets, clock, pause, screen, poster, touchSource},
            {fileChooser, fileReader, application, poster},
            [this] {
                ++devicesListsMade;
                return std::make_unique<DevicesListViewController>(devicesListView, browsers, log);
            },
            [this] {
                ++settingsMade;
                return std::make_unique<RelaySettingsViewController>();
            }};
    }

    void pickRoom204() { dashboard->didPickCastingDeviceWithIP("10.0.2.15", "0A00020F", "Room 204"); }

    void clickSwitch()
    {
        view.wirelessTouchSwitch().mouseDown();
        view.wirelessTouchSwitch().mouseUp();
    }

    void takeLocalAddressAway() { addresses.entries->clear(); }

    /// The numbers of the heartbeat requests among all that were sent.
    std::vector<std::size_t> pings() const
    {
        std::vector<std::size_t> indices;
        for (std::size_t index = 0; index < http.sent().size(); ++index) {
            if (http.request(index).url.text.find("/pingServerWithIP") != std::string::npos)
                indices.push_back(index);
        }
        return indices;
    }

    /// Answers heartbeat number `ping`, counted from 0, without running the main queue.
    void answer(std::size_t ping, const std::string& body)
    {
        http.completeWithHttp(pings().at(ping), 200, body);
    }
    void failPing(std::size_t ping) { http.completeWithHttp(pings().at(ping), 500, ""); }

    /// The messages of all alerts so far.
    std::vector<std::string> alertMessages() const
    {
        std::vector<std::string> messages;
        for (const FakeAlerts::Shown& shown : alerts.shown)
            messages.push_back(shown.message);
        return messages;
    }

    Transcript transcript;
    Transcript consoleTranscript;
    FakeMainQueue queue;
    FakeDashboardView view{transcript, queue};
    FakeAlerts alerts{transcript};
    FakeSystemLog log{transcript};
    FakeConsole console{consoleTranscript};
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule interfaceName;
    FakeAsyncUdpSocketFactory sockets{transcript};
    FakeClock clock;
    FakePause pause{transcript};
    FakeScreen screen;
    FakeMouseEventPoster poster{transcript};
    FakeFileChooser fileChooser{transcript};
    FakeFileReader fileReader{transcript};
    FakeApplication application{transcript};
    FakeServiceBrowserFactory browsers{transcript};
    FakeDevicesListView devicesListView{transcript};
    int devicesListsMade = 0;
    int settingsMade = 0;
    TouchSource touchSource = TouchSource::any;

    std::string transcriptOfLoading;

    // Requests without an answer hold the dashboard, so they go while all that it works with is there.
    TranscribingHttpSession http{transcript};
    std::shared_ptr<DashboardViewController> dashboard;
};

} // namespace companion::testing
