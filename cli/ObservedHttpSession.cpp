#include "cli/ObservedHttpSession.h"

#include "platform/Text.h"

#include <algorithm>
#include <utility>

namespace companion::cli {

namespace {

bool isUnreadable(const HttpReply& reply)
{
    return !reply.error && reply.data && reply.response && reply.response->statusCode == 200
        && !isValidUtf8(*reply.data);
}

HttpReply refused(HttpReply unreadable)
{
    return {std::nullopt, std::move(unreadable.response), "the text of its answer is not UTF-8"};
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
    if (m_timeout) {
        request.timeout = *m_timeout;
        if (request.longestDuration)
            request.longestDuration = std::max(*request.longestDuration, *m_timeout);
    }
    m_inner.send(std::move(request),
        [observer = m_observer, refuses = m_refusesUnreadableAnswers, completion = std::move(completion)](
            HttpReply reply) {
            if (refuses && isUnreadable(reply))
                reply = refused(std::move(reply));
            const Outcome outcome = outcomeOf(reply);
            completion(std::move(reply));
            if (observer)
                observer(outcome);
        });
}

} // namespace companion::cli
