#include "cli/DiscoverCommand.h"

#include "cli/Text.h"

#include <algorithm>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::seconds longestDaemonCheck{3};
constexpr std::size_t addressColumn = 17; // the longest address and two blanks

std::string panelLine(const PanelName& panel)
{
    std::string line = panel.ip;
    line.resize(std::max(addressColumn, line.size() + 1), ' ');
    return line + panel.name + " (" + panel.model + ")";
}

Json panelJson(const PanelName& panel)
{
    return {{"name", panel.name}, {"address", panel.ip}, {"model", panel.model}, {"hexAddress", panel.hex}};
}

} // namespace

DiscoverCommand::DiscoverCommand(PanelSearch search, Output& output, Request request)
    : m_search(search)
    , m_output(output)
    , m_request(std::move(request))
    , m_browse(search.browsers)
{
}

void DiscoverCommand::start(Finished finished)
{
    m_finished = std::move(finished);
    const std::string whyNot = whyNoPanelCanBeFound(
        m_search.probes.mdnsDaemon(std::min<std::chrono::milliseconds>(longestDaemonCheck, m_request.time)));
    if (!whyNot.empty()) {
        std::exchange(m_finished, nullptr)({ExitStatus::noPanel, whyNot, {{"panels", Json::array()}}});
        return;
    }
    m_browse.start([this](const PanelName& panel) { panelFound(panel); });
    m_search.mainQueue.after(m_request.time, [this] { end(); });
}

Interruption DiscoverCommand::interrupt()
{
    m_isInterrupted = true;
    end();
    return Interruption::endWithResult;
}

void DiscoverCommand::panelFound(const PanelName& panel)
{
    if (!m_finished || !m_request.choice.includes(panel))
        return;
    if (!m_request.isJson)
        m_output.print(panelLine(panel));
    if (m_request.choice.isMade())
        end();
}

void DiscoverCommand::end()
{
    if (m_finished)
        std::exchange(m_finished, nullptr)(result());
}

Result DiscoverCommand::result() const
{
    Json found = Json::array();
    for (const PanelName& panel : m_browse.panels()) {
        if (m_request.choice.includes(panel))
            found.push_back(panelJson(panel));
    }
    Result result;
    result.json["panels"] = found;
    if (!found.empty())
        return result;
    result.status = ExitStatus::noPanel;
    result.text =
        (m_request.choice.isMade() ? "that panel did not announce itself " : "no panel announced itself ")
        + (m_isInterrupted ? "so far" : "within " + secondsText(m_request.time));
    return result;
}

} // namespace companion::cli
