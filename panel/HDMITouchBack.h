#pragma once

#include "panel/PanelService.h"

#include <optional>
#include <string>

namespace companion {

/// Asks a panel to send its touches to this computer, or to stop. Main thread only; it may be destroyed while
/// requests are in flight.
class HDMITouchBack {
public:
    explicit HDMITouchBack(const PanelRequestHost& host);

    /// enableHDMITouchbackWithEnable:fromHDMI:selectedDeviceIP:
    /// Sends one request and returns at once; the outcome is not reported. Without a local address nothing is sent
    /// and no flag changes. An absent panel address is a fatal error when there is a local one.
    void enableHDMITouchback(bool enable, bool fromHDMI, const std::optional<std::string>& selectedDeviceIP);

    /// This computer's address, which the panel sends touches to; "" when there is none.
    std::string getLocalIPAddress() const;

    /// The panel address of the last call.
    const std::optional<std::string>& obtainedDeviceIP() const { return m_obtainedDeviceIP; }

    /// The flags of the last prepared request, "true" or "false" as they go into its query.
    const std::string& enableHDMITouchback() const { return m_enableHDMITouchback; }
    const std::string& hideMenu() const { return m_hideMenu; }
    const std::string& isHDMI() const { return m_isHDMI; }

private:
    PanelRequestHost m_host;
    std::optional<std::string> m_obtainedDeviceIP = "";
    std::string m_enableHDMITouchback = "true";
    std::string m_hideMenu = "true";
    std::string m_isHDMI = "true";
};

} // namespace companion
