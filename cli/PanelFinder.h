#pragma once

#include "cli/MdnsDaemon.h"
#include "cli/PanelBrowse.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion::cli {

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
