#include "cli/PingCommand.h"

#include "cli/LocalAddressNeeded.h"

#include <utility>

namespace companion::cli {

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
    return {ExitStatus::done, address() + " is there" + (body.empty() ? "" : ": " + excerpt(body)), {}};
}

} // namespace companion::cli
