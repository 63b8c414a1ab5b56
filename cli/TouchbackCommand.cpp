#include "cli/TouchbackCommand.h"

#include "cli/LocalAddressNeeded.h"

#include <utility>

namespace companion::cli {

TouchbackCommand::TouchbackCommand(
    PanelRequestTools tools, PanelRequestOptions options, PanelRequestHost host, Switch wanted)
    : PanelRequestCommand(tools, std::move(options))
    , m_host(host)
    , m_touchBack(host)
    , m_wanted(wanted)
{
}

std::optional<Result> TouchbackCommand::send(const std::string& address)
{
    if (auto lack = lackOfLocalAddress(m_host, address))
        return lack;
    m_touchBack.enableHDMITouchback(m_wanted.isOn, m_wanted.isHDMI, address);
    m_localAddress = m_touchBack.getLocalIPAddress();
    return std::nullopt;
}

Result TouchbackCommand::resultOfAnswer(int status, const std::string& body)
{
    if (status != 200)
        return refusalByStatus(status, body);
    JsonObject json;
    json.add("localAddress", m_localAddress)
        .addFlag("enabled", m_wanted.isOn)
        .addFlag("isHDMI", m_wanted.isHDMI);
    return {ExitStatus::done,
        address() + (m_wanted.isOn ? " sends its touches to " : " sends no more touches to ")
            + m_localAddress,
        json};
}

} // namespace companion::cli
