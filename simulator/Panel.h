#pragma once

#include "simulator/EventLog.h"
#include "simulator/HttpServer.h"
#include "simulator/Options.h"
#include "simulator/PanelState.h"
#include "simulator/ServicePort.h"
#include "simulator/TouchControl.h"
#include "simulator/TouchSender.h"

#include <memory>
#include <optional>

namespace companion::simulator {

class Announcer;

/// The whole panel, running while the object lives. Needs an event loop for its announcement. Main thread.
class Panel {
public:
    /// `options.address` must not be "". `recording` is played to whoever turns touchback on.
    /// Throws std::system_error, with a one-line message, if it cannot start.
    explicit Panel(const Options& options, std::optional<Gesture> recording = std::nullopt);
    ~Panel();

private:
    EventLog m_log;
    PanelState m_state;
    TouchSender m_touches;
    TouchControl m_touchControl;
    ServicePort m_servicePort;
    const std::string m_uploadFolder;
    HttpServer m_service; // the servers are destroyed before what their threads use
    HttpServer m_upload;
    std::unique_ptr<Announcer> m_announcer;
};

} // namespace companion::simulator
