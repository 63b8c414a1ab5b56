#pragma once

#include "simulator/ControlInterface.h"
#include "simulator/EventLog.h"
#include "simulator/HeldConnections.h"
#include "simulator/HttpServer.h"
#include "simulator/Options.h"
#include "simulator/PanelState.h"
#include "simulator/ServicePort.h"
#include "simulator/TouchSender.h"
#include "simulator/UploadPort.h"

#include <memory>

namespace companion::simulator {

class Announcer;

/// The whole panel, at work as long as the object lives. Needs an event loop for its announcement. Main thread.
class Panel {
public:
    /// `options.address` must not be "" here. Throws std::system_error with one line when it cannot start.
    explicit Panel(const Options& options);
    ~Panel();

private:
    EventLog m_log;
    PanelState m_state;
    HeldConnections m_held;
    TouchSender m_touches;
    ControlInterface m_control;
    ServicePort m_servicePort;
    UploadPort m_uploadPort;
    HttpServer m_service;
    HttpServer m_upload;
    std::unique_ptr<Announcer> m_announcer;
};

} // namespace companion::simulator
