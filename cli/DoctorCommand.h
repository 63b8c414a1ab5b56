#pragma once

#include "cli/Checks.h"
#include "cli/Command.h"
#include "cli/ObservedHttpSession.h"
#include "cli/PanelFinder.h"
#include "cli/Probes.h"
#include "panel/HDMITouchBack.h"
#include "platform/AsyncUdpSocket.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

/// `doctor`: diagnoses connection problems between this computer and a panel. Each step takes a bounded time,
/// and so does the whole. Main thread only.
class DoctorCommand : public Command, private AsyncUdpSocketDelegate {
public:
    struct Tools {
        PanelSearch search;
        AsyncUdpSocketFactory& sockets;
        ObservedHttpSession& httpSession;
        PanelRequestHost host; ///< Sends by `httpSession`.
        Output& output;
        std::function<std::chrono::steady_clock::time_point()> now;
    };

    struct Request {
        PanelChoice choice;
        std::optional<std::string> interfaceName;
        std::optional<std::chrono::milliseconds> timeout; ///< Of each step.
        bool awaitsTouches = false;
        bool isJson = false;
        FirewallProfiles firewallProfiles = FirewallProfiles::none;
        std::string version;
        std::string system;
    };

    DoctorCommand(const Tools& tools, Request request);

    void start(Finished finished) override;

    /// Tells a panel that was asked for touches to stop sending them.
    Interruption interrupt() override;

private:
    void udpSocketDidReceiveData(
        AsyncUdpSocket& socket, std::string_view data, const UdpSender& from) override;

    // The steps, each of which goes on to the next one by itself.
    void searchForPanels();
    void finishSearch();
    void checkPorts();
    void checkTouchPort();
    void awaitTouches();
    void finishTouches(const std::optional<std::chrono::milliseconds>& after, const std::string& sender);
    void checkDisplay();
    void finishOnceAnswered();

    void report(const Check& check);
    void finish();
    void later(std::chrono::milliseconds delay, void (DoctorCommand::*step)());
    std::chrono::milliseconds stepTime() const;
    std::chrono::milliseconds touchTime() const;

    /// The panels to ask: the one that is meant, else those that were found.
    std::vector<std::string> panelAddresses() const;
    std::optional<std::string> onlyPanel() const;
    void switchTouchback(bool isOn);

    Tools m_tools;
    Request m_request;
    Finished m_finished;
    std::vector<Check> m_checks;
    std::string m_reasonForNoSearch;
    std::unique_ptr<PanelBrowse> m_browse;
    bool m_isSearching = false;

    HDMITouchBack m_touchBack;
    std::unique_ptr<AsyncUdpSocket> m_socket;
    bool m_isAwaitingTouches = false;
    std::optional<std::string> m_askedPanel; ///< where touchback has been switched on, if anywhere
    int m_unansweredRequests = 0;
    bool m_isComplete = false;
    std::chrono::steady_clock::time_point m_waitBegan;
};

} // namespace companion::cli
