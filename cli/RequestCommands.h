#pragma once

#include "cli/PanelRequestCommand.h"
#include "panel/HDMITouchBack.h"
#include "panel/PingServer.h"
#include "panel/TriggerCastingApp.h"

#include <mutex>

namespace companion::cli {

/// `ping`: one heartbeat.
class PingCommand : public PanelRequestCommand {
public:
    /// `host` sends by the observed session of `tools`.
    PingCommand(PanelRequestTools tools, PanelRequestOptions options, PanelRequestHost host);

protected:
    std::optional<Result> send(const std::string& address) override;
    Result resultOfAnswer(int status, const std::string& body) override;

private:
    /// What the heartbeat itself makes of the answer; told on the delivery thread.
    struct Reading {
        std::mutex mutex;
        std::string reply;
    };

    PanelRequestHost m_host;
    std::shared_ptr<Reading> m_reading = std::make_shared<Reading>();
};

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
