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
    made.headers = {{"Content-Type", mediaType}, {"Accept", mediaType}};
    made.body = request.body;
    made.cachePolicy = CachePolicy::useProtocolCachePolicy;
    made.timeout = std::chrono::seconds(60);
    // One is sent every few seconds, and the answers are short: a panel that drips them must not gather requests.
    made.longestDuration = std::chrono::seconds(60);
    return made;
}

} // namespace

PanelService::PanelService(HttpSession& httpSession, Console& console)
    : m_httpSession(httpSession)
    , m_console(console)
{
}

bool PanelService::send(const PanelRequest& request, ReplyHandling handleReply) const
{
    std::optional<Url> url = m_httpSession.urlFromText(urlText(request));
    if (!url)
        return false;

    // The completion outlives this object, so it holds the console by itself.
    m_httpSession.send(httpRequest(std::move(*url), request),
        [&console = m_console, handleReply = std::move(handleReply)](HttpReply reply) {
            if (!reply.data || reply.error)
                return;
            console.print(reply.response ? reply.response->description() : "no response");
            handleReply({std::move(reply.response), std::move(*reply.data)});
        });
    return true;
}

} // namespace companion
