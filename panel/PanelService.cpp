#include "panel/PanelService.h"

#include "platform/FatalError.h"

#include <utility>

namespace companion {

namespace {

constexpr auto mediaType = "application/json; charset=utf-8";

std::string urlText(const PanelRequest& request)
{
    if (!request.panelAddress)
        fatalError("A panel request has no panel address.");
    return "http://" + *request.panelAddress + ":5000" + request.pathAndQuery;
}

HttpRequest httpRequest(Url url, const PanelRequest& request)
{
    HttpRequest made;
    made.url = std::move(url);
    made.method = request.method;
    made.headers = {
        {"Content-Type", mediaType}, {"Accept", mediaType}}; // none changes the protocol's cache policy
    made.body = request.body;
    // A heartbeat is sent every few seconds: they must not pile up at a panel whose replies keep dripping.
    made.longestDuration = std::chrono::minutes(10);
    return made;
}

} // namespace

bool sendPanelRequest(
    const PanelRequestHost& host, const PanelRequest& request, PanelReplyHandling handleReply)
{
    std::optional<Url> url = urlFromText(urlText(request));
    if (!url)
        return false;

    host.httpSession.send(httpRequest(std::move(*url), request),
        [&console = host.console, handleReply = std::move(handleReply)](HttpReply reply) {
            if (!reply.data || reply.error)
                return;
            console.print(reply.response ? reply.response->description() : "no response");
            handleReply({std::move(reply.response), std::move(*reply.data)});
        });
    return true;
}

} // namespace companion
