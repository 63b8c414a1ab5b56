#include "cli/ObservedHttpSession.h"

#include "platform/Utf8.h"

#include <utility>

namespace companion::cli {

namespace {

bool isUnreadable(const HttpReply& reply)
{
    return !reply.error && reply.data && reply.response && reply.response->statusCode == 200
        && !isValidUtf8(*reply.data);
}

HttpReply readable(HttpReply reply)
{
    if (isUnreadable(reply))
        return {std::nullopt, std::move(reply.response), "the text of its answer is not UTF-8"};
    return reply;
}

Outcome outcomeOf(const HttpReply& reply)
{
    Outcome outcome;
    outcome.error = reply.error;
    if (reply.response)
        outcome.status = reply.response->statusCode;
    if (reply.data)
        outcome.body = *reply.data;
    if (!outcome.error && !outcome.status)
        outcome.error = "its answer is not one of HTTP";
    return outcome;
}

} // namespace

ObservedHttpSession::ObservedHttpSession(HttpSession& inner, std::optional<std::chrono::milliseconds> timeout)
    : m_inner(inner)
    , m_timeout(timeout)
{
}

void ObservedHttpSession::send(HttpRequest request, HttpCompletion completion)
{
    ++m_sentRequests;
    if (m_timeout)
        request.timeout = *m_timeout;
    m_inner.send(
        std::move(request), [observer = m_observer, completion = std::move(completion)](HttpReply reply) {
            HttpReply seen = readable(std::move(reply));
            const Outcome outcome = outcomeOf(seen);
            completion(std::move(seen));
            if (observer)
                observer(outcome);
        });
}

} // namespace companion::cli
