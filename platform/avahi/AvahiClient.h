#pragma once

#include "platform/avahi/SystemBus.h"
#include "platform/Log.h"

#include <deque>
#include <functional>
#include <memory>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QString>
#include <QVariantList>
#include <string_view>

namespace companion {

/// Avahi's number for any network interface, or any protocol.
inline constexpr int avahiAny = -1;

/// A kind of object that the daemon makes for its clients.
struct AvahiObjectType {
    const char* constructor; ///< a method of org.freedesktop.Avahi.Server
    const char* interface;   ///< of the objects themselves
};

/// An object in the daemon, a browser or a resolver; destroying this frees it there. It falls silent when the daemon
/// goes. Its client must outlive it.
class AvahiObject {
public:
    struct Handlers {
        /// A signal of the object; may destroy the object.
        std::function<void(const QString& member, const QVariantList& arguments)> onSignal;
        /// The daemon did not make it; `error` is a D-Bus error's name. May destroy the object.
        std::function<void(const QString& error)> onRefused;
    };

    AvahiObject(class AvahiClient& client, const AvahiObjectType& type, Handlers handlers)
        : m_client(client)
        , m_type(type)
        , m_handlers(std::move(handlers))
    {
    }
    ~AvahiObject();
    AvahiObject(const AvahiObject&) = delete;
    AvahiObject& operator=(const AvahiObject&) = delete;

private:
    friend class AvahiClient;

    AvahiClient& m_client;
    const AvahiObjectType& m_type;
    const Handlers m_handlers;
    QString m_path; ///< empty before the daemon has replied and after it has gone
};

/// The Avahi daemon on the system bus, whenever it is there. Main thread only.
///
/// Calls are asynchronous. Objects are made in the order of the requests, with a limited number of calls waiting for their
/// reply: a bus refuses more than 128 a connection. A missing daemon costs no wake-ups, since the bus reports its arrival.
class AvahiClient : public QObject {
    Q_OBJECT

public:
    explicit AvahiClient(SystemLog& log);

    /// Connects; `daemonCame` is emitted whenever the daemon appears.
    void start() { m_bus.connectToBus(); }

    bool isDaemonRunning() const { return !m_owner.isEmpty(); }

    /// The object has one owner; the client holds it only while it calls a handler. It stays silent if there is no daemon.
    /// `type` must outlive the client.
    std::shared_ptr<AvahiObject> makeObject(
        const AvahiObjectType& type, const QVariantList& arguments, AvahiObject::Handlers handlers);

Q_SIGNALS:
    void daemonCame();

private Q_SLOTS:
    void receiveSignal(const QDBusMessage& message);

private:
    friend class AvahiObject;

    using OnReply = std::function<void(const QDBusMessage&)>;
    struct Request {
        std::weak_ptr<AvahiObject> object;
        const AvahiObjectType& type;
        QVariantList arguments;
    };

    void changeBus(SystemBus::State state);
    void watchDaemon();
    void askForOwner();
    void activateDaemon();
    void setOwner(const QString& owner);
    void subscribe();
    void unsubscribe();
    void forgetObjects();
    void sendRequests();
    void receiveReply(const Request& request, const QDBusMessage& reply);
    void free(const AvahiObjectType& type, const QString& path);
    void callBus(const QString& method, const QVariantList& arguments, OnReply onReply);
    void call(const QDBusMessage& message, OnReply onReply);
    void logStatus(std::string_view status);

    SystemLog& m_log;
    std::string_view m_status; ///< as last logged
    SystemBus m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    QString m_owner;  ///< the daemon's unique name on the bus, empty while there is none
    int m_daemon = 0; ///< counts daemons, since names and paths are the same again on a restarted bus
    bool m_ownerIsKnown = false; ///< the watcher has reported, which makes an outstanding reply outdated

    std::deque<Request> m_requests;
    int m_unanswered = 0;                                 ///< requests sent
    QHash<QString, std::weak_ptr<AvahiObject>> m_objects; ///< by path
    /// Signals by path, of objects whose path is not known yet: Qt may deliver them before the reply with the path.
    QHash<QString, QList<QDBusMessage>> m_early;
};

} // namespace companion
