#pragma once

#include "platform/avahi/AvahiSession.h"
#include "platform/avahi/ResolutionAttempt.h"
#include "platform/MainQueue.h"
#include "platform/ServiceBrowser.h"

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace companion {

/// A service that Avahi announced, in one or more places. Main thread only.
///
/// Resolving begins with the first place, goes on to the next where that fails, and survives a restart of the daemon.
class AvahiService : public Service,
                     public std::enable_shared_from_this<AvahiService>,
                     public ResolutionAttempt::Owner {
public:
    /// `type` and `domain` are as the caller gave them to the browser. `queue` must outlive the service.
    AvahiService(MainQueue& queue, std::shared_ptr<AvahiSession> session, std::string name, std::string type,
        std::string domain);

    std::string name() const override { return m_name; }
    std::string type() const override { return m_type; }
    std::string domain() const override { return m_domain; }
    void setDelegate(ServiceDelegate* delegate) override { m_delegate = delegate; }
    void resolveWithTimeout(std::chrono::milliseconds timeout) override;

    void addInstance(ServiceInstance instance);
    /// A resolution under way in that place goes on.
    void removeInstance(ServiceInstance instance);

private:
    void attemptResolved() override;
    void attemptFailed() override { tryNextInstance(); }

    void tryNextInstance();
    bool isBeingTried(ServiceInstance instance) const;
    ServiceIdentity identity() const;

    MainQueue& m_queue;
    std::shared_ptr<AvahiSession> m_session;
    std::string m_name;
    std::string m_type;
    std::string m_domain;
    ServiceDelegate* m_delegate = nullptr;
    std::vector<ServiceInstance> m_instances;
    QTimer m_deadline; ///< active while resolving
    std::list<ResolutionAttempt> m_attempts;
};

/// A domain in the daemon's words: without the dot at its end.
QString avahiDomain(const std::string& domain);

} // namespace companion
