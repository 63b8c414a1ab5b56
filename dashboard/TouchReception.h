#pragma once

#include "dashboard/PairedPanel.h"
#include "dashboard/TouchArrival.h"
#include "dashboard/TouchSource.h"
#include "platform/AsyncUdpSocket.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/MouseEventPoster.h"
#include "platform/Screen.h"
#include "touchback/MouseSimulate.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

namespace companion {

/// What touches need of the computer.
struct TouchDependencies {
    AsyncUdpSocketFactory& sockets;
    Clock& clock;
    Pause& pause;
    Screen& screen;
    MouseEventPoster& mouseEventPoster;
    TouchSource source = TouchSource::any;
};

/// Receives the panel's touches on UDP port 41863 and injects them as mouse events. Main thread only.
class TouchReception : public AsyncUdpSocketDelegate {
public:
    static constexpr std::uint16_t port = 41863;

    /// All arguments outlive this object; the panel is the one whose touches `TouchSource::panel` accepts.
    TouchReception(const TouchDependencies& dependencies, DashboardView& view, MainQueue& mainQueue,
        SystemLog& log, Console& console, const PairedPanel& panel);

    /// Replaces the socket by a new one. False, with a line in the log, when it cannot receive.
    bool open();
    void close();

    /// For when the panel is told to send no more touches: the finger's "UP" may never arrive. The socket stays open.
    void touchesEnd();
    bool isOpen() const { return m_socket && !m_socket->isClosed(); }

    /// Injects one touch; drops one from another source, and a record with fewer than four fields.
    void udpSocketDidReceiveData(
        AsyncUdpSocket& socket, std::string_view data, const UdpSender& from) override;

private:
    bool receive();
    bool isAccepted(const UdpSender& sender) const;
    void logShortRecord();

    const TouchDependencies m_dependencies;
    SystemLog& m_log;
    Console& m_console;
    const PairedPanel& m_panel;
    TouchArrival m_arrival;

    std::unique_ptr<AsyncUdpSocket> m_socket;
    std::optional<MouseSimulate>
        m_mouseSimulator;                        ///< Made by the first touch, then kept: sockets come and go.
    std::optional<double> m_shortRecordLoggedAt; // seconds since 1970
};

} // namespace companion
