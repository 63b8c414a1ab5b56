#pragma once

#include "cli/PanelRequestCommand.h"
#include "panel/TriggerCastingApp.h"

namespace companion::cli {

/// `trigger`: asks the panel to open its casting receiver.
class TriggerCommand : public PanelRequestCommand {
public:
    /// `host` sends by the observed session of `tools`.
    TriggerCommand(PanelRequestTools tools, PanelRequestOptions options, const PanelRequestHost& host);

protected:
    std::optional<Result> send(const std::string& address) override;
    Result resultOfAnswer(int status, const std::string& body) override;

private:
    std::shared_ptr<TriggerCastingApp> m_trigger;
};

} // namespace companion::cli
