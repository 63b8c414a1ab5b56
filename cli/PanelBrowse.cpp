#include "cli/PanelBrowse.h"

#include <utility>

namespace companion::cli {

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

} // namespace companion::cli
