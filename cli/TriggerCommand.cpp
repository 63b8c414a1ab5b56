#include "cli/TriggerCommand.h"

#include <utility>

namespace companion::cli {

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
