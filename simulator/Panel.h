#pragma once

#include "simulator/ControlInterface.h"
#include "simulator/EventLog.h"
#include "simulator/HeldConnections.h"
#include "simulator/HttpServer.h"
#include "simulator/Options.h"
#include "simulator/Page.h"
#include "simulator/PanelState.h"
#include "simulator/Replay.h"
#include "simulator/ServicePort.h"
#include "simulator/TouchControl.h"
#include "simulator/TouchSender.h"
#include "simulator/UploadPort.h"

#include <memory>
#include <optional>

namespace companion::simulator {

class Announcer;

/// The whole panel, at work as long as the object lives. Needs an event loop for its announcement. Main thread.
class Panel {
public:
    /// `options.address` must not be "" here. Throws std::system_error with one line when it cannot start.
    /// `recording` is what is played to who turns touchback on.
    explicit Panel(const Options& options, std::optional<Gesture> recording = std::nullopt);
    ~Panel();

private:
    EventLog m_log;
    PanelState m_state;
    HeldConnections m_held;
    TouchSender m_touches;
    Replay m_replay;
    TouchControl m_touchControl;
    ControlInterface m_control;
    Page m_page;
    ServicePort m_servicePort;
    UploadPort m_uploadPort;
    HttpServer m_service;
    HttpServer m_upload;
    std::unique_ptr<Announcer> m_announcer;
};

} // namespace companion::simulator
