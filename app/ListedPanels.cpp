#include "app/ListedPanels.h"

#include "discovery/PanelName.h"

#include <set>
#include <utility>

namespace companion {

namespace {

/// A service that is always there and resolves at once.
class ListedService : public Service, public std::enable_shared_from_this<ListedService> {
public:
    ListedService(std::string name, std::string type, std::string domain, MainQueue& mainQueue)
        : m_name(std::move(name))
        , m_type(std::move(type))
        , m_domain(std::move(domain))
        , m_mainQueue(mainQueue)
    {
    }

    std::string name() const override { return m_name; }
    std::string type() const override { return m_type; }
    std::string domain() const override { return m_domain; }
    void setDelegate(ServiceDelegate* delegate) override { m_delegate = delegate; }

    void resolveWithTimeout(std::chrono::milliseconds) override
    {
        m_mainQueue.async([weak = weak_from_this()] {
            if (const auto service = weak.lock(); service && service->m_delegate)
                service->m_delegate->netServiceDidResolveAddress(*service);
        });
    }

private:
    std::string m_name;
    std::string m_type;
    std::string m_domain;
    MainQueue& m_mainQueue;
    ServiceDelegate* m_delegate = nullptr;
};

class ListedPanelsBrowser : public ServiceBrowser, private ServiceBrowserDelegate {
public:
    ListedPanelsBrowser(
        std::vector<std::string> names, std::unique_ptr<ServiceBrowser> others, MainQueue& mainQueue)
        : m_names(std::move(names))
        , m_others(std::move(others))
        , m_mainQueue(mainQueue)
    {
        for (const std::string& name : m_names) {
            const auto panel = parsePanelName(name);
            if (panel && namesSupportedModel(panel->model))
                m_addresses.insert(panel->ip);
        }
    }

    void setDelegate(ServiceBrowserDelegate* delegate) override
    {
        *m_delegate = delegate;
        m_others->setDelegate(delegate ? this : nullptr);
    }

    void searchForServices(const std::string& type, const std::string& domain) override
    {
        for (const std::string& name : m_names) {
            auto service = std::make_shared<ListedService>(name, type, domain, m_mainQueue);
            m_mainQueue.async([service, weak = std::weak_ptr(m_delegate)] {
                if (const auto delegate = weak.lock(); delegate && *delegate)
                    (*delegate)->netServiceBrowserDidFindService(service, /*moreComing=*/false);
            });
        }
        m_others->searchForServices(type, domain);
    }

private:
    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool moreComing) override
    {
        if (!isListed(*service))
            (*m_delegate)->netServiceBrowserDidFindService(std::move(service), moreComing);
    }

    void netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool moreComing) override
    {
        if (!isListed(*service))
            (*m_delegate)->netServiceBrowserDidRemoveService(std::move(service), moreComing);
    }

    /// By address, as the list of panels knows them: the same panel may announce itself by another name.
    bool isListed(const Service& service) const
    {
        const auto panel = parsePanelName(service.name());
        return panel && m_addresses.contains(panel->ip);
    }

    std::vector<std::string> m_names;
    std::set<std::string> m_addresses; ///< Of the listed panels whose model is supported.
    std::unique_ptr<ServiceBrowser> m_others;
    MainQueue& m_mainQueue;
    std::shared_ptr<ServiceBrowserDelegate*> m_delegate = std::make_shared<ServiceBrowserDelegate*>(nullptr);
};

} // namespace

ListedPanels::ListedPanels(
    std::vector<std::string> names, ServiceBrowserFactory& others, MainQueue& mainQueue)
    : m_names(std::move(names))
    , m_others(others)
    , m_mainQueue(mainQueue)
{
}

std::unique_ptr<ServiceBrowser> ListedPanels::makeServiceBrowser()
{
    return std::make_unique<ListedPanelsBrowser>(m_names, m_others.makeServiceBrowser(), m_mainQueue);
}

} // namespace companion
