#pragma once

#include "panel/PanelService.h"

#include <functional>
#include <optional>
#include <string>

namespace companion {

/// `reply` is "", "CAST_OFF" or "DEVICE_BUSY".
using PanelReplyHandler = std::function<void(bool success, const std::string& reply)>;

/// The heartbeat: tells a panel that this computer is alive, and asks whether the session is still on. Made for one
/// call and dropped after it; the running request keeps alive what it needs.
class PingServer {
public:
    explicit PingServer(const PanelRequestHost& host);

    /// pingServerHeartbeatWithSelectedDeviceIP:handler:
    /// Without a local address `handler` is called with (false, "") at once, on the calling thread. Otherwise it is
    /// called with a complete answer, on the delivery thread: success is status 200. It is never called for a request
    /// that failed, got no answer or could not be sent. An absent panel address is a fatal error when there is a
    /// local one, and so is an answer of status 200 that is not UTF-8.
    void pingServerHeartbeat(const std::optional<std::string>& selectedDeviceIP, PanelReplyHandler handler);

private:
    PanelRequestHost m_host;
};

} // namespace companion
