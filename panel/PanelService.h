#pragma once

#include "platform/HttpSession.h"
#include "platform/InterfaceAddresses.h"
#include "platform/Log.h"

#include <functional>
#include <optional>
#include <string>

namespace companion {

/// What the panel requests need of the computer that they are sent from. All of it outlives the HTTP session's
/// completions.
struct PanelRequestHost {
    HttpSession& httpSession;
    const InterfaceAddresses& interfaceAddresses;
    const InterfaceNameRule& interfaceNameRule;
    Console& console;
};

/// One request to the panel's service, as far as it differs from the others.
struct PanelRequest {
    std::optional<std::string> panelAddress; ///< Dotted IPv4. Absent is a fatal error once it is sent.
    std::string pathAndQuery;                ///< For example "/ws", sent as it is.
    std::string method = "GET";
    std::optional<HttpBody> body = std::nullopt;
};

/// A complete answer; `response` may be of another kind than HTTP.
struct PanelReply {
    std::optional<UrlResponse> response;
    std::string body;
};

/// The HTTP service on port 5000 of a panel: how every request to it is formed, sent and answered. It may be
/// destroyed while requests are under way. Any thread.
class PanelService {
public:
    using ReplyHandling = std::function<void(const PanelReply&)>;

    /// Both must outlive the session's completions.
    PanelService(HttpSession& httpSession, Console& console);

    /// Starts the request and returns at once; false, and nothing else happens, when panel address and path make
    /// no URL. `handleReply` is called on the delivery thread with a complete answer, after the line that
    /// describes the response; when there is an error or no body data, it is never called. No retry, no
    /// cancellation.
    bool send(const PanelRequest& request, ReplyHandling handleReply) const;

private:
    HttpSession& m_httpSession;
    Console& m_console;
};

} // namespace companion
