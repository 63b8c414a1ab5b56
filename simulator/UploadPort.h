#pragma once

#include "simulator/EventLog.h"
#include "simulator/HttpServer.h"
#include "simulator/PanelState.h"

#include <string>

namespace companion::simulator {

/// What the upload port serves: one request, "/uploadfile", whose body is read as it comes and never held in memory.
class UploadPort {
public:
    /// `folder` as UploadFile takes it.
    UploadPort(PanelState& state, EventLog& log, std::string folder);

    /// On the server's thread.
    std::unique_ptr<Exchange> open(const Request& request);

private:
    PanelState& m_state;
    EventLog& m_log;
    std::string m_folder;
};

} // namespace companion::simulator
