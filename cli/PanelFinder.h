#pragma once

#include "cli/Probes.h"
#include "discovery/PanelList.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
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

/// What the command line says about which panel is meant.
struct PanelChoice {
    std::optional<std::string> address;
    std::optional<std::string> name;

    bool isMade() const { return address || name; }

    /// Whether a panel that announces itself is the one; all are when there is no choice.
    bool includes(const PanelName& panel) const
    {
        return (!address || *address == panel.ip) && (!name || *name == panel.name);
    }
};

/// What finding panels needs of the computer.
struct PanelSearch {
    ServiceBrowserFactory& browsers;
    MdnsDaemon& mdnsDaemon;
    MainQueue& mainQueue;
};

/// Finds the address of the panel that is meant. Main thread only.
class PanelFinder {
public:
    struct Found {
        std::optional<std::string> address; ///< Dotted IPv4; nothing when there is no such panel.
        std::string whyNot;                 ///< One line.
    };
    using OnFound = std::function<void(const Found& found)>;

    PanelFinder(PanelSearch search, PanelChoice choice, std::chrono::milliseconds time);
    ~PanelFinder();

    /// Calls `onFound` once: at once for an address; for a name when a panel of it is there, or the time is over.
    /// Panels that share the name are none: which of them is meant is not for us to guess.
    void find(OnFound onFound);

private:
    void hearOf(const PanelName& panel);
    void decide();
    void tell(const Found& found);

    PanelSearch m_search;
    PanelChoice m_choice;
    std::chrono::milliseconds m_time;
    OnFound m_onFound;
    std::unique_ptr<PanelBrowse> m_browse;
    bool m_isDeciding = false;
    std::shared_ptr<PanelFinder*> m_self = std::make_shared<PanelFinder*>(this);
};

} // namespace companion::cli
