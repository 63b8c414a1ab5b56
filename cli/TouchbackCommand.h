#pragma once

#include "cli/PanelRequestCommand.h"
#include "panel/HDMITouchBack.h"

namespace companion::cli {

/// `touchback on|off`: has touches sent to this computer, or no more.
class TouchbackCommand : public PanelRequestCommand {
public:
    struct Switch {
        bool isOn = false;
        bool isHDMI = false;
    };

    /// `host` sends by the observed session of `tools`.
    TouchbackCommand(
        PanelRequestTools tools, PanelRequestOptions options, PanelRequestHost host, Switch wanted);

protected:
    std::optional<Result> send(const std::string& address) override;
    Result resultOfAnswer(int status, const std::string& body) override;

private:
    PanelRequestHost m_host;
    HDMITouchBack m_touchBack;
    Switch m_wanted;
    std::string m_localAddress;
};

} // namespace companion::cli
