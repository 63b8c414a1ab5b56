#include "cli/PanelFinder.h"

#include "cli/Text.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace companion::cli {

namespace {

/// Another panel of the same name has so long to show itself.
constexpr std::chrono::milliseconds timeForNamesakes{300};
constexpr std::chrono::seconds timeForDaemon{3};

std::string addressList(const std::vector<PanelName>& panels)
{
    std::string text;
    for (const PanelName& panel : panels)
        text += (text.empty() ? "" : ", ") + panel.ip;
    return text;
}

} // namespace

PanelBrowse::PanelBrowse(ServiceBrowserFactory& browsers)
    : m_browsers(browsers)
{
}

PanelBrowse::~PanelBrowse()
{
    if (m_browser)
        m_browser->setDelegate(nullptr);
}

void PanelBrowse::start(OnPanel onPanel)
{
    m_onPanel = std::move(onPanel);
    m_browser = m_browsers.makeServiceBrowser();
    m_browser->setDelegate(this);
    m_browser->searchForServices(PanelList::serviceType, PanelList::serviceDomain);
}

void PanelBrowse::netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool /*moreComing*/)
{
    m_list.addService(service, *this);
}

void PanelBrowse::netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool /*moreComing*/)
{
    m_list.removeService(*service);
}

void PanelBrowse::netServiceDidResolveAddress(Service& service)
{
    const auto resolved = m_list.acceptService(service);
    if (resolved && resolved->isNew && m_onPanel)
        m_onPanel(resolved->panel);
}

PanelFinder::PanelFinder(PanelSearch search, PanelChoice choice, std::chrono::milliseconds time)
    : m_search(search)
    , m_choice(std::move(choice))
    , m_time(time)
{
}

PanelFinder::~PanelFinder() = default;

void PanelFinder::find(OnFound onFound)
{
    m_onFound = std::move(onFound);
    if (m_choice.address) {
        finish({m_choice.address, ""});
        return;
    }
    const std::string whyNot = whyNoPanelCanBeFound(
        m_search.probes.mdnsDaemon(std::min<std::chrono::milliseconds>(timeForDaemon, m_time)));
    if (!whyNot.empty()) {
        finish({std::nullopt, whyNot});
        return;
    }
    m_browse = std::make_unique<PanelBrowse>(m_search.browsers);
    m_browse->start([this](const PanelName& panel) { panelFound(panel); });
    m_search.mainQueue.after(m_time, [this] { decide(); });
}

void PanelFinder::panelFound(const PanelName& panel)
{
    if (!m_choice.includes(panel) || std::exchange(m_isDeciding, true))
        return;
    m_search.mainQueue.after(timeForNamesakes, [this] { decide(); });
}

void PanelFinder::decide()
{
    if (!m_onFound)
        return;
    std::vector<PanelName> found = m_browse->panels();
    std::erase_if(found, [this](const PanelName& panel) { return !m_choice.includes(panel); });
    if (found.size() == 1)
        finish({found.front().ip, ""});
    else if (found.empty())
        finish({std::nullopt,
            "no panel called \"" + m_choice.name.value_or("") + "\" announced itself within "
                + secondsText(m_time)});
    else
        finish({std::nullopt,
            "several panels are called \"" + m_choice.name.value_or("") + "\" (" + addressList(found)
                + "): use --panel-address"});
}

void PanelFinder::finish(const Found& found)
{
    const OnFound onFound = std::exchange(m_onFound, nullptr);
    onFound(found);
}

} // namespace companion::cli
