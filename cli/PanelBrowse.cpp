#include "cli/PanelBrowse.h"

#include "discovery/DevicesListViewController.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::chrono::seconds resolveTime{20};

std::optional<PanelName> supportedPanel(const Service& service)
{
    auto panel = parsePanelName(service.name());
    return panel && namesSupportedModel(panel->model) ? panel : std::nullopt;
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
    for (const auto& service : m_services)
        service->setDelegate(nullptr);
}

void PanelBrowse::start(OnPanel onPanel)
{
    m_onPanel = std::move(onPanel);
    m_browser = m_browsers.makeServiceBrowser();
    m_browser->setDelegate(this);
    m_browser->searchForServices(
        DevicesListViewController::serviceType, DevicesListViewController::serviceDomain);
}

std::size_t PanelBrowse::otherServices() const
{
    return static_cast<std::size_t>(std::count_if(
        m_services.begin(), m_services.end(), [](const auto& service) { return !supportedPanel(*service); }));
}

void PanelBrowse::netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool /*moreComing*/)
{
    m_services.push_back(service);
    service->setDelegate(this);
    service->resolveWithTimeout(resolveTime);
}

void PanelBrowse::netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool /*moreComing*/)
{
    std::erase_if(m_services, [&](const std::shared_ptr<Service>& held) {
        if (!isSameService(*held, *service))
            return false;
        held->setDelegate(nullptr);
        return true;
    });
    if (const auto panel = supportedPanel(*service))
        std::erase(m_panels, *panel);
}

void PanelBrowse::netServiceDidResolveAddress(Service& service)
{
    const auto panel = supportedPanel(service);
    // The first one to announce an address has it, as in the application's list.
    const bool isListed = panel
        && std::any_of(m_panels.begin(), m_panels.end(),
            [&](const PanelName& listed) { return listed.ip == panel->ip || listed.hex == panel->hex; });
    if (!panel || isListed)
        return;
    m_panels.push_back(*panel);
    if (m_onPanel)
        m_onPanel(*panel);
}

} // namespace companion::cli
