#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace companion {

class Service;

class ServiceDelegate {
public:
    virtual ~ServiceDelegate() = default;

    /// netServiceDidResolveAddress:
    /// Zero or more times for each resolution. Main queue.
    virtual void netServiceDidResolveAddress(Service& service) = 0;
};

/// One announced DNS-SD service instance (RFC 6763). Main thread only.
class Service {
public:
    virtual ~Service() = default;

    /// The instance name, UTF-8, unescaped.
    virtual std::string name() const = 0;
    virtual std::string type() const = 0;
    virtual std::string domain() const = 0;

    /// The delegate must outlive the service or take itself away with null.
    virtual void setDelegate(ServiceDelegate* delegate) = 0;

    /// Starts resolving; the delegate hears of success only, and of nothing after `timeout`.
    virtual void resolveWithTimeout(std::chrono::milliseconds timeout) = 0;
};

/// Two objects are the same service when name, type and domain are the same.
inline bool isSameService(const Service& a, const Service& b)
{
    return a.name() == b.name() && a.type() == b.type() && a.domain() == b.domain();
}

class ServiceBrowserDelegate {
public:
    virtual ~ServiceBrowserDelegate() = default;

    /// netServiceBrowser:didFindService:moreComing:
    /// Main queue. The service lives, and goes on resolving, as long as somebody holds it.
    virtual void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool moreComing) = 0;

    /// netServiceBrowser:didRemoveService:moreComing:
    /// Main queue. `service` is equal to the one found, not always the same object.
    virtual void netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool moreComing) = 0;
};

/// Watches the network for DNS-SD services of one type. A service is reported found once, however many
/// interfaces and protocols it is seen on, and removed when it is gone from all of them. Main thread only.
class ServiceBrowser {
public:
    virtual ~ServiceBrowser() = default;

    virtual void setDelegate(ServiceBrowserDelegate* delegate) = 0;

    /// Starts browsing, for example for "_airplay._tcp" in "local.", and goes on until destroyed. A failure is
    /// silent and mends itself: a daemon that is missing now may come later.
    virtual void searchForServices(const std::string& type, const std::string& domain) = 0;
};

class ServiceBrowserFactory {
public:
    virtual ~ServiceBrowserFactory() = default;

    virtual std::unique_ptr<ServiceBrowser> makeServiceBrowser() = 0;
};

} // namespace companion
