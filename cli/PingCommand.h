#pragma once

#include "cli/PanelRequestCommand.h"
#include "panel/PingServer.h"

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

} // namespace companion::cli
