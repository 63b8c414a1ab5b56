#include "simulator/CollectingExchange.h"

#include "simulator/Text.h"

#include <utility>

namespace companion::simulator {

namespace {

// Beyond this, a client that sends on is not worth an answer.
constexpr std::size_t maxDrained = 16 * CollectingExchange::maxBody;

Answer tooLarge()
{
    return lineAnswer(
        413, "the body is limited to " + std::to_string(CollectingExchange::maxBody) + " bytes");
}

} // namespace

CollectingExchange::CollectingExchange(const Request& request)
    : m_request(request)
{
}

Outcome CollectingExchange::headArrived()
{
    const auto length = m_request.header("Content-Length");
    if (length && !parseCount(*length, maxBody))
        return tooLarge();
    return ReadOn();
}

Outcome CollectingExchange::bodyArrived(std::string_view data, std::size_t&)
{
    m_size += data.size();
    if (m_size > maxDrained)
        return HangUp();
    if (m_size <= maxBody)
        m_body.append(data);
    return ReadOn();
}

Outcome CollectingExchange::requestComplete()
{
    return m_size > maxBody ? tooLarge() : answer();
}

FixedExchange::FixedExchange(Answer answer)
    : m_answer(std::move(answer))
{
}

std::unique_ptr<Exchange> wrongMethod(const std::string& allowed)
{
    Answer answer = lineAnswer(405, "only " + allowed + " works here");
    answer.fields.push_back({"Allow", allowed});
    return std::make_unique<FixedExchange>(std::move(answer));
}

std::unique_ptr<Exchange> unknownPath(const Request& request)
{
    return std::make_unique<FixedExchange>(lineAnswer(404, "there is no " + printable(request.path())));
}

} // namespace companion::simulator
