#pragma once

#include "discovery/PanelList.h"

#include <functional>
#include <memory>
#include <vector>

namespace companion::cli {

/// Browses the network for panels; the list is that of the application. Main thread only.
class PanelBrowse : private ServiceBrowserDelegate, private ServiceDelegate {
public:
    using OnPanel = std::function<void(const PanelName& panel)>;

    explicit PanelBrowse(ServiceBrowserFactory& browsers);
    ~PanelBrowse() override;
    PanelBrowse(const PanelBrowse&) = delete;
    PanelBrowse& operator=(const PanelBrowse&) = delete;

    /// `onPanel`, which may be empty, hears of each panel once, as soon as its service resolves. Called once.
    void start(OnPanel onPanel = {});

    /// Those that are there now, in the order in which they came.
    const std::vector<PanelName>& panels() const { return m_list.panels(); }

    /// The services that are there now and are no panels of a known model.
    std::size_t otherServices() const { return m_list.otherServices(); }

private:
    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceDidResolveAddress(Service& service) override;

    ServiceBrowserFactory& m_browsers;
    OnPanel m_onPanel;
    std::unique_ptr<ServiceBrowser> m_browser;
    PanelList m_list;
};

} // namespace companion::cli
