#pragma once

#include "platform/avahi/AvahiClient.h"
#include "platform/MainQueue.h"
#include "platform/ServiceBrowser.h"

#include <memory>
#include <QString>
#include <QTimer>
#include <string>
#include <vector>

namespace companion {

/// Where an announcement was seen: a network interface's index and Avahi's number for IPv4 or IPv6.
struct ServiceInstance {
    int interface;
    int protocol;

    bool operator==(const ServiceInstance&) const = default;
};

/// A service that Avahi announced as one or more instances. Main thread only.
///
/// The first instance is resolved, then the next one if that fails, and so on in turns until the time-out, also across a
/// restart of the daemon.
class AvahiService : public Service, public std::enable_shared_from_this<AvahiService> {
public:
    /// `type` and `domain` are as the caller gave them to the browser. `queue` must outlive the service.
    AvahiService(MainQueue& queue, std::shared_ptr<AvahiClient> client, std::string name, std::string type,
        std::string domain);

    std::string name() const override { return m_name; }
    std::string type() const override { return m_type; }
    std::string domain() const override { return m_domain; }
    void setDelegate(ServiceDelegate* delegate) override { m_delegate = delegate; }
    void resolveWithTimeout(std::chrono::milliseconds timeout) override;

    void addInstance(ServiceInstance instance);
    /// Resolving that instance continues if it is under way.
    void removeInstance(ServiceInstance instance);

private:
    void resolveFirstInstance();
    void receiveSignal(const QString& member);
    void reportResolved();
    void retryLater();

    MainQueue& m_queue;
    std::shared_ptr<AvahiClient> m_client;
    std::string m_name;
    std::string m_type;
    std::string m_domain;
    ServiceDelegate* m_delegate = nullptr;
    std::vector<ServiceInstance> m_instances; ///< in the order in which they are resolved
    QTimer m_deadline;                        ///< active while resolving
    bool m_hasFailed = false;
    std::shared_ptr<AvahiObject> m_resolver;
};

/// A domain as the daemon writes it: without the final dot.
QString avahiDomain(const std::string& domain);

} // namespace companion
