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
    HttpMethod method = HttpMethod::get;
    std::optional<HttpBody> body = std::nullopt;
};

/// A complete answer; `response` may be of another kind than HTTP.
struct PanelReply {
    std::optional<UrlResponse> response;
    std::string body;
};

/// Called on the delivery thread.
using PanelReplyHandling = std::function<void(const PanelReply&)>;

/// Sends a request to the HTTP service on port 5000 of a panel, and returns at once. Any thread. Panel address and path
/// that make no URL are ignored: false, and nothing else happens.
///
/// A complete answer is described on the console, then handed to `handleReply`, which is never called when there is an
/// error or no body data. No retry, no cancellation.
bool sendPanelRequest(
    const PanelRequestHost& host, const PanelRequest& request, PanelReplyHandling handleReply);

} // namespace companion
