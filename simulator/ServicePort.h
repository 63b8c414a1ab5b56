#pragma once

#include "simulator/EventLog.h"
#include "simulator/HttpServer.h"
#include "simulator/PanelState.h"

namespace companion::simulator {

class ControlInterface;

/// What the service port serves: the three requests of the panel service, and the control interface beside them.
class ServicePort {
public:
    ServicePort(PanelState& state, EventLog& log, ControlInterface& control);

    /// On the server's thread.
    std::unique_ptr<Exchange> open(const Request& request);

private:
    PanelState& m_state;
    EventLog& m_log;
    ControlInterface& m_control;
};

} // namespace companion::simulator
