#pragma once

#include "dashboard/DashboardView.h"
#include "dashboard/PairedPanel.h"
#include "platform/AsyncUdpSocket.h"
#include "platform/MainQueue.h"

#include <memory>

namespace companion {

/// Has the view say whether touches arrive while they are expected. Main thread only.
///
/// Every touch passes here, and costs the test of one member once the first has come.
class TouchArrival {
public:
    /// All arguments outlive this object.
    TouchArrival(DashboardView& view, MainQueue& mainQueue, const PairedPanel& panel);

    /// Touches are expected from now on, unless the port could not be opened.
    void begin(bool isPortOpen);
    void end();

    /// A touch was injected.
    void touchArrived(const UdpSender& from)
    {
        if (m_wait)
            touchWorks(from);
    }

    /// A datagram was dropped for its sender.
    void touchIgnored(const UdpSender& from)
    {
        if (m_wait && m_state != TouchState::ignored)
            show(TouchState::ignored, from.host);
    }

private:
    void touchWorks(const UdpSender& from);
    void show(TouchState state, const std::string& sender = {});

    DashboardView& m_view;
    MainQueue& m_mainQueue;
    const PairedPanel& m_panel;
    TouchState m_state = TouchState::notExpected;
    std::shared_ptr<const bool> m_wait; ///< Until the first touch; the hint that is due holds it weakly.
};

} // namespace companion
