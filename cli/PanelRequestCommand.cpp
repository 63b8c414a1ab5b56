#include "cli/PanelRequestCommand.h"

#include "cli/Text.h"

#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::seconds timeToFindPanel{5};
constexpr std::chrono::seconds timeForAnswer{60};

} // namespace

PanelRequestCommand::PanelRequestCommand(PanelRequestTools tools, PanelRequestOptions options)
    : m_tools(tools)
    , m_options(std::move(options))
    , m_finder(tools.search, m_options.choice, m_options.timeout.value_or(timeToFindPanel))
{
}

void PanelRequestCommand::start(Finished finished)
{
    m_finished = std::move(finished);
    m_finder.find([this](const PanelFinder::Found& found) {
        if (found.address)
            sendTo(*found.address);
        else
            finish({ExitStatus::noPanel, found.whyNot, {}});
    });
}

void PanelRequestCommand::sendTo(const std::string& address)
{
    m_address = address;
    m_tools.httpSession.setObserver([this](const Outcome& outcome) {
        m_tools.search.mainQueue.async([this, outcome] { finish(resultOf(outcome)); });
    });
    if (const auto refusal = send(address)) {
        finish(*refusal);
        return;
    }
    if (m_tools.httpSession.sentRequests() == 0)
        finish(networkFailure("its address cannot stand in a URL"));
    else if (isShort())
        setDeadline();
}

/// The session watches for idleness; this is for an answer that never ends.
void PanelRequestCommand::setDeadline()
{
    const auto time = m_options.timeout.value_or(timeForAnswer);
    m_tools.search.mainQueue.after(
        time, [this, time] { finish(networkFailure("no answer within " + secondsText(time))); });
}

void PanelRequestCommand::finish(Result result)
{
    if (m_finished)
        std::exchange(m_finished, nullptr)(std::move(result));
}

Result PanelRequestCommand::resultOf(const Outcome& outcome)
{
    if (outcome.error) {
        Result failure = networkFailure(*outcome.error);
        if (outcome.status)
            failure.json["status"] = *outcome.status;
        return failure;
    }
    Result result = resultOfAnswer(*outcome.status, outcome.body);
    Json answer = {{"address", m_address}, {"status", *outcome.status}, {"answer", excerpt(outcome.body)}};
    if (!result.json.is_null())
        answer.update(result.json);
    result.json = answer;
    return result;
}

Result PanelRequestCommand::networkFailure(const std::string& why) const
{
    return {ExitStatus::network, m_address + ": " + why, {{"address", m_address}}};
}

std::string PanelRequestCommand::excerpt(const std::string& body)
{
    constexpr std::size_t longest = 200;
    return body.size() <= longest ? body : body.substr(0, longest) + "...";
}

Result PanelRequestCommand::refusalByStatus(int status, const std::string& body) const
{
    std::string text = m_address + " answered with status " + std::to_string(status);
    if (!body.empty())
        text += ": " + excerpt(body);
    return {ExitStatus::refused, text, {}};
}

} // namespace companion::cli
