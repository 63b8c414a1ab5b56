#pragma once

#include "simulator/EventLog.h"
#include "simulator/HttpServer.h"
#include "simulator/PanelState.h"

namespace companion::simulator {

class HeldConnections;
class TouchControl;

/// What lies under "/simulator/": the panel's state, touches to be played, and how it answers from now on.
class ControlInterface {
public:
    ControlInterface(PanelState& state, TouchControl& touches, HeldConnections& held, EventLog& log);

    /// On the server's thread; for paths that begin with "/simulator/".
    std::unique_ptr<Exchange> open(const Request& request);

private:
    PanelState& m_state;
    TouchControl& m_touches;
    HeldConnections& m_held;
    EventLog& m_log;
};

} // namespace companion::simulator
