#pragma once

#include "simulator/EventLog.h"
#include "simulator/HttpServer.h"
#include "simulator/PanelState.h"

namespace companion::simulator {

class ControlInterface;
class Page;
class Replay;

/// What the service port serves: the three requests of the panel service, and the control interface and the page
/// beside them.
class ServicePort {
public:
    ServicePort(
        PanelState& state, EventLog& log, ControlInterface& control, const Page& page, Replay& replay);

    /// On the server's thread.
    std::unique_ptr<Exchange> open(const Request& request);

private:
    std::unique_ptr<Exchange> openOwn(const Request& request);

    PanelState& m_state;
    EventLog& m_log;
    ControlInterface& m_control;
    const Page& m_page;
    Replay& m_replay;
};

} // namespace companion::simulator
