#pragma once

#include "platform/avahi/AvahiClient.h"
#include "platform/avahi/TurnQueue.h"

#include <memory>
#include <QString>
#include <QTimer>

namespace companion {

/// Where an announcement was seen: a network interface's index and Avahi's number for IPv4 or IPv6.
struct ServiceInstance {
    int interface;
    int protocol;

    bool operator==(const ServiceInstance&) const = default;
};

/// A service's identity in the daemon's words.
struct ServiceIdentity {
    QString name;
    QString type;
    QString domain; ///< without a dot at its end
};

/// One try at resolving a service as seen in one place; destroying it ends the try. Main thread only.
///
/// The daemon reports a failure after five seconds and yet an answer whenever it comes, so the try goes on.
class ResolutionAttempt {
public:
    class Owner {
    public:
        virtual ~Owner() = default;

        /// Comes once; the attempt may be destroyed.
        virtual void attemptResolved() = 0;
        /// May come again, and be followed by success. The attempt may not be destroyed.
        virtual void attemptFailed() = 0;
    };

    /// `owner`, `client` and `turns` must outlive the attempt. Nothing is sent before its turn.
    ResolutionAttempt(Owner& owner, AvahiClient& client, TurnQueue& turns, const ServiceIdentity& service,
        ServiceInstance instance);

    ServiceInstance instance() const { return m_instance; }
    bool hasFailed() const { return m_hasFailed; }

private:
    void begin();
    void suspend();
    void receiveSignal(const QString& member);
    void fail();

    Owner& m_owner;
    AvahiClient& m_client;
    ServiceIdentity m_service;
    ServiceInstance m_instance;
    bool m_hasFailed = false;
    QTimer m_silence;
    std::unique_ptr<AvahiObject> m_resolver;
    TurnQueue::Turn m_turn; // goes first: what waits behind it may begin then
};

} // namespace companion
