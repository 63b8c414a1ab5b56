#pragma once

#include "platform/curl/CurlHttpSession.h"

namespace companion::testing {

/// A real HTTP session whose requests go to the port of a test's server instead of the panel's.
class RedirectedSession : public HttpSession {
public:
    RedirectedSession(SystemLog& log, std::string panelPort)
        : m_panelPort(":" + std::move(panelPort) + "/")
        , m_session(log)
    {
    }

    void send(HttpRequest request, HttpCompletion completion) override
    {
        std::string& url = request.url.text;
        url.replace(url.find(m_panelPort), m_panelPort.size(), ":" + std::to_string(port) + "/");
        request.timeout = timeout.value_or(request.timeout);
        m_session.send(std::move(request), std::move(completion));
    }

    std::uint16_t port = 0;
    std::optional<std::chrono::milliseconds> timeout; ///< In place of the request's own.

private:
    const std::string m_panelPort;
    CurlHttpSession m_session;
};

} // namespace companion::testing
