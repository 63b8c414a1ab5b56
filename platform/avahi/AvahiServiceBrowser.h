#pragma once

#include "platform/avahi/AvahiService.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/ServiceBrowser.h"

#include <memory>
#include <QString>
#include <QTimer>
#include <QVariantList>
#include <string>
#include <unordered_map>
#include <vector>

namespace companion {

/// Browses with the Avahi daemon, over its D-Bus interface on the system bus. Main thread only; needs an event loop.
///
/// Found and removed services are reported through the main queue. Bus and daemon may be missing, start later, and
/// restart: known services stay known until the new daemon has browsed, and only changes are reported then. Nothing is
/// reported removed because the daemon has gone, since the panels are still there.
class AvahiServiceBrowser : public ServiceBrowser {
public:
    /// `queue` and `log` must outlive the browser and every service that it found.
    AvahiServiceBrowser(MainQueue& queue, SystemLog& log);
    ~AvahiServiceBrowser() override;
    AvahiServiceBrowser(const AvahiServiceBrowser&) = delete;
    AvahiServiceBrowser& operator=(const AvahiServiceBrowser&) = delete;

    void setDelegate(ServiceBrowserDelegate* delegate) override;

    /// To be called once.
    void searchForServices(const std::string& type, const std::string& domain) override;

private:
    using Report = void (ServiceBrowserDelegate::*)(std::shared_ptr<Service>, bool moreComing);

    /// Shared with the jobs that deliver reports; those still pending when the browser is destroyed do nothing.
    struct Reports {
        ServiceBrowserDelegate* delegate = nullptr;
        int pending = 0;
    };

    struct Sighting {
        ServiceInstance instance;
        bool isConfirmed; ///< reported by the current daemon
    };

    /// A service that was reported found: the delegate's object, as long as somebody holds it, and its instances.
    struct Known {
        std::weak_ptr<AvahiService> service;
        std::vector<Sighting> sightings;
    };
    using KnownServices = std::unordered_map<std::string, Known>;

    void browse();
    void browseAgainLater(const QString& error);
    void receiveSignal(const QString& member, const QVariantList& arguments);
    void addSighting(const std::string& name, ServiceInstance instance);
    void removeSighting(const std::string& name, ServiceInstance instance);
    void removeUnconfirmed();
    void reportFound(const std::string& name, Known& known);
    void reportRemoved(KnownServices::iterator known);
    void deliver(Report report, std::shared_ptr<Service> service);
    std::shared_ptr<AvahiService> makeService(const std::string& name);

    MainQueue& m_queue;
    SystemLog& m_log;
    std::shared_ptr<AvahiClient> m_client; ///< shared with the services, which may outlive the browser
    const std::shared_ptr<Reports> m_reports = std::make_shared<Reports>();
    std::string m_type;
    std::string m_domain;
    KnownServices m_known; ///< by name
    bool m_hasFailed = false;
    QTimer m_retry;
    std::shared_ptr<AvahiObject> m_browser;
};

class AvahiServiceBrowserFactory : public ServiceBrowserFactory {
public:
    AvahiServiceBrowserFactory(MainQueue& queue, SystemLog& log)
        : m_queue(queue)
        , m_log(log)
    {
    }

    std::unique_ptr<ServiceBrowser> makeServiceBrowser() override
    {
        return std::make_unique<AvahiServiceBrowser>(m_queue, m_log);
    }

private:
    MainQueue& m_queue;
    SystemLog& m_log;
};

} // namespace companion
