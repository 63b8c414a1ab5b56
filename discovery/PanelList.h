#pragma once

#include "discovery/PanelName.h"
#include "platform/ServiceBrowser.h"

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace companion {

/// Decides which of the services on the network are panels, which of these are listed, and when they go. Shared by
/// the application's list and `panelctl`. Main thread only.
class PanelList {
public:
    static constexpr auto serviceType = "_airplay._tcp";
    static constexpr auto serviceDomain = "local.";

    PanelList() = default;
    ~PanelList();
    PanelList(const PanelList&) = delete;
    PanelList& operator=(const PanelList&) = delete;

    /// Holds a found service, which keeps it resolving, and resolves it for `delegate`, which must outlive the list.
    void addService(const std::shared_ptr<Service>& service, ServiceDelegate& delegate);

    struct Resolved {
        PanelName panel;
        bool isNew = false; ///< Listed now; otherwise its address was listed before.
    };

    /// What a resolved service stands for; nothing when it is no panel of a supported model.
    std::optional<Resolved> acceptService(const Service& service);

    /// Drops the service, and the panel listed at its address, whoever announced that. Whether a panel was dropped.
    bool removeService(const Service& service);

    /// In the order in which they were accepted; no address is listed twice.
    const std::vector<PanelName>& panels() const;

    /// The names by row. Removal is by value, so there are fewer than panels once one of two namesakes has gone.
    const std::vector<std::string>& names() const;

    /// Found and not yet removed, in no order.
    std::vector<std::shared_ptr<Service>> services() const;

    /// How many of the services are no panels of a supported model.
    std::size_t otherServices() const;

private:
    void eraseRemovedRows() const;

    std::unordered_multimap<std::string, std::shared_ptr<Service>> m_services; ///< By name.
    std::unordered_set<std::string> m_listedHex; ///< Decides which of `m_panels` are listed.
    std::unordered_set<std::string> m_listedIps;
    // Rows go when somebody looks next, since erasing each by itself would take quadratic time for all.
    mutable std::vector<PanelName> m_panels;
    mutable std::vector<std::string> m_names;
    mutable std::unordered_set<std::string> m_removedNames;
};

} // namespace companion
