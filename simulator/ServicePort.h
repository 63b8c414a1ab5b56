#pragma once

#include "simulator/HttpServer.h"

#include <string>

namespace companion::simulator {

class EventLog;
class PanelState;
class TouchControl;

/// Answers everything on the service port: the three requests of the panel service, the control interface below
/// "/simulator/", and the page. Any thread.
class ServicePort {
public:
    /// `uploads` is the folder that keeps uploads; "" if none does.
    ServicePort(PanelState& state, EventLog& log, TouchControl& touches, std::string uploads);

    Outcome answer(const Request& request, const std::string& body);

private:
    struct Route {
        std::string_view path;
        std::string method;
        Handler answer;
    };

    Outcome ping(const Request& request, const std::string& body);
    Outcome switchTouchback(const Request& request, const std::string& body);
    Outcome trigger(const Request& request, const std::string& body);
    Outcome state(const Request& request, const std::string& body);
    Outcome setReply(const Request& request, const std::string& body);
    Outcome setUploadReply(const Request& request, const std::string& body);

    PanelState& m_state;
    EventLog& m_log;
    TouchControl& m_touches;
    const std::string m_uploads;
    const std::vector<Route> m_routes;
};

} // namespace companion::simulator
