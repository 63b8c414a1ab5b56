#include "discovery/PanelList.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace companion {

namespace {

constexpr std::chrono::seconds resolveTimeout{20};

std::optional<PanelName> supportedPanel(const Service& service)
{
    auto panel = parsePanelName(service.name());
    return panel && namesSupportedModel(panel->model) ? std::move(panel) : std::nullopt;
}

} // namespace

PanelList::~PanelList()
{
    for (const auto& [name, service] : m_services)
        service->setDelegate(nullptr);
}

void PanelList::addService(const std::shared_ptr<Service>& service, ServiceDelegate& delegate)
{
    m_services.emplace(service->name(), service);
    service->setDelegate(&delegate);
    service->resolveWithTimeout(resolveTimeout);
}

std::optional<PanelList::Resolved> PanelList::acceptService(const Service& service)
{
    const std::optional<PanelName> panel = supportedPanel(service);
    if (!panel)
        return std::nullopt;
    // Different hexadecimal texts can mean the same address.
    const bool isNew = m_listedIps.insert(panel->ip).second;
    if (isNew) {
        eraseRemovedRows();
        m_listedHex.insert(panel->hex);
        m_panels.push_back(*panel);
        m_names.push_back(panel->name);
    }
    return Resolved{*panel, isNew};
}

bool PanelList::removeService(const Service& service)
{
    const std::string name = service.name();
    auto [held, end] = m_services.equal_range(name);
    while (held != end) {
        if (!isSameService(*held->second, service)) {
            ++held;
            continue;
        }
        held->second->setDelegate(nullptr);
        held = m_services.erase(held);
    }

    // Letter case counts when a panel is added and does not when it is removed.
    const std::optional<PanelName> panel = parsePanelName(name);
    if (!panel || !namesSupportedModelInAnyCase(panel->model))
        return false;
    const bool isListed = m_listedHex.erase(panel->hex) > 0;
    if (isListed) {
        m_listedIps.erase(panel->ip); // which the hexadecimal text decides
        m_removedNames.insert(panel->name);
    }
    return isListed;
}

const std::vector<PanelName>& PanelList::panels() const
{
    eraseRemovedRows();
    return m_panels;
}

const std::vector<std::string>& PanelList::names() const
{
    eraseRemovedRows();
    return m_names;
}

void PanelList::eraseRemovedRows() const
{
    if (m_removedNames.empty())
        return;
    std::erase_if(m_panels, [this](const PanelName& panel) { return !m_listedHex.contains(panel.hex); });
    std::erase_if(m_names, [this](const std::string& name) { return m_removedNames.contains(name); });
    m_removedNames.clear();
}

std::vector<std::shared_ptr<Service>> PanelList::services() const
{
    std::vector<std::shared_ptr<Service>> services;
    for (const auto& [name, service] : m_services)
        services.push_back(service);
    return services;
}

std::size_t PanelList::otherServices() const
{
    return static_cast<std::size_t>(std::count_if(m_services.begin(), m_services.end(),
        [](const auto& entry) { return !supportedPanel(*entry.second); }));
}

} // namespace companion
