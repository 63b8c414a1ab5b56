#include "panel/HDMITouchBack.h"

#include "panel/LocalAddress.h"

namespace companion {

namespace {

std::string flagText(bool flag)
{
    return flag ? "true" : "false";
}

} // namespace

HDMITouchBack::HDMITouchBack(const PanelRequestHost& host)
    : m_host(host)
{
}

void HDMITouchBack::enableHDMITouchback(
    bool enable, bool fromHDMI, const std::optional<std::string>& selectedDeviceIP)
{
    m_obtainedDeviceIP = selectedDeviceIP;
    const std::string localAddress = getLocalIPAddress();
    if (localAddress.empty())
        return;

    m_enableHDMITouchback = flagText(enable);
    m_hideMenu = flagText(!enable);
    m_isHDMI = flagText(fromHDMI);

    const PanelRequest request{selectedDeviceIP,
        "/enableWifiTouchback?ip=" + localAddress + "&enable=" + m_enableHDMITouchback
            + "&hidemenu=" + m_hideMenu + "&isHDMI=" + m_isHDMI};
    sendPanelRequest(m_host, request, [](const PanelReply&) {
        // The line on the console is all that a reply leads to.
    });
}

std::string HDMITouchBack::getLocalIPAddress() const
{
    return companion::getLocalIPAddress(
        m_host.interfaceAddresses, m_host.interfaceNameRule.interfaceNameTowards(m_obtainedDeviceIP));
}

} // namespace companion
