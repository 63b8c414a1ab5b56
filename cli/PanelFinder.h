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

    /// `onPanel`, which may be empty, is called once for each panel, as soon as its service resolves. To be called once.
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

/// The panel chosen on the command line, if any.
struct PanelChoice {
    std::optional<std::string> address;
    std::optional<std::string> name;

    bool isMade() const { return address || name; }

    /// Whether the panel is the chosen one; every panel is when none is chosen.
    bool includes(const PanelName& panel) const
    {
        return (!address || *address == panel.ip) && (!name || *name == panel.name);
    }
};

/// The interfaces that finding panels needs.
struct PanelSearch {
    ServiceBrowserFactory& browsers;
    const Probes& probes;
    MainQueue& mainQueue;
};

/// Finds the address of the panel that is meant. Main thread only. Its jobs on the main queue must be dropped before it is
/// destroyed.
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
    /// If several panels share the name, none is found: choosing one would be a guess.
    void find(OnFound onFound);

private:
    void panelFound(const PanelName& panel);
    void decide();
    void finish(const Found& found);

    PanelSearch m_search;
    PanelChoice m_choice;
    std::chrono::milliseconds m_time;
    OnFound m_onFound;
    std::unique_ptr<PanelBrowse> m_browse;
    bool m_isDeciding = false;
};

} // namespace companion::cli
