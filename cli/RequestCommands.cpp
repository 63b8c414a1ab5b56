#include "cli/RequestCommands.h"

#include "panel/LocalAddress.h"

#include <utility>

namespace companion::cli {

namespace {

/// Why a panel at `panelAddress` cannot be told where this computer is; nothing when it can. The request classes are
/// silent about it.
std::optional<Result> lackOfLocalAddress(const PanelRequestHost& host, const std::string& panelAddress)
{
    const std::string name = host.interfaceNameRule.interfaceNameTowards(panelAddress);
    if (!getLocalIPAddress(host.interfaceAddresses, name).empty())
        return std::nullopt;
    const std::string why = name.empty()
        ? "no network interface leads to " + panelAddress
        : "the network interface " + name + " has no IPv4 address that a panel could be told";
    return Result{ExitStatus::network, why, {{"address", panelAddress}}};
}

} // namespace

PingCommand::PingCommand(PanelRequestTools tools, PanelRequestOptions options, PanelRequestHost host)
    : PanelRequestCommand(tools, std::move(options))
    , m_host(host)
{
    tools.httpSession.refuseUnreadableAnswers();
}

std::optional<Result> PingCommand::send(const std::string& address)
{
    if (auto lack = lackOfLocalAddress(m_host, address))
        return lack;
    PingServer(m_host).pingServerHeartbeat(
        address, [reading = m_reading](bool /*success*/, const std::string& reply) {
            const std::lock_guard lock(reading->mutex);
            reading->reply = reply;
        });
    return std::nullopt;
}

Result PingCommand::resultOfAnswer(int status, const std::string& body)
{
    if (status != 200)
        return refusalByStatus(status, body);
    const std::lock_guard lock(m_reading->mutex);
    if (m_reading->reply == "CAST_OFF")
        return {ExitStatus::refused, address() + " says that casting is off", {}};
    if (m_reading->reply == "DEVICE_BUSY")
        return {ExitStatus::refused, address() + " says that it is busy", {}};
    return {ExitStatus::done, address() + " answered" + (body.empty() ? "" : ": " + excerpt(body)), {}};
}

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
    return {ExitStatus::done,
        address() + (m_wanted.isOn ? " sends its touches to " : " sends no more touches to ")
            + m_localAddress,
        {{"localAddress", m_localAddress}, {"enabled", m_wanted.isOn}, {"isHDMI", m_wanted.isHDMI}}};
}

TriggerCommand::TriggerCommand(
    PanelRequestTools tools, PanelRequestOptions options, const PanelRequestHost& host)
    : PanelRequestCommand(tools, std::move(options))
    , m_trigger(TriggerCastingApp::make(host))
{
}

std::optional<Result> TriggerCommand::send(const std::string& address)
{
    m_trigger->triggerCastService(address);
    return std::nullopt;
}

Result TriggerCommand::resultOfAnswer(int status, const std::string& /*body*/)
{
    const std::string text = m_trigger->obtainedDeviceIP().value_or("");
    if (status != 200)
        return refusalByStatus(status, text);
    return {ExitStatus::done,
        address() + " was asked to open its receiver" + (text.empty() ? "" : ": " + excerpt(text)), {}};
}

} // namespace companion::cli
