#pragma once

#include "platform/avahi/BusProbe.h"
#include "platform/Log.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QObject>
#include <QString>
#include <QTimer>
#include <QVariantList>

namespace companion {

/// Avahi's word for every network interface, or every protocol.
inline constexpr int avahiAny = -1;

/// Something that the daemon made for us, a browser or a resolver; destroying this frees it there. It becomes mute
/// when the daemon goes. Its client must outlive it.
class AvahiObject {
public:
    struct Handlers {
        /// A signal of the object; may destroy the object.
        std::function<void(const QString& member, const QVariantList& arguments)> onSignal;
        /// The daemon did not make it; `error` is a D-Bus error's name. May destroy the object.
        std::function<void(const QString& error)> onRefused;
    };

    ~AvahiObject();
    AvahiObject(const AvahiObject&) = delete;
    AvahiObject& operator=(const AvahiObject&) = delete;

private:
    friend class AvahiClient;
    struct State;

    AvahiObject(class AvahiClient& client, std::shared_ptr<State> state);

    AvahiClient& m_client;
    std::shared_ptr<State> m_state;
};

/// The Avahi daemon on the system bus, as long and as often as it is there. Main thread only.
///
/// Nothing here waits: calls are asynchronous, and a bus is connected to only once it has shown that it answers (see
/// BusProbe for those of which that cannot be asked). While it does not, it is tried after two seconds, then after four, and so on up to half a minute; a daemon that is missing
/// costs no wake-ups, since the bus tells when it comes.
class AvahiClient : public QObject {
    Q_OBJECT

public:
    explicit AvahiClient(SystemLog& log);
    ~AvahiClient() override;

    /// Connects; `daemonCame` follows, now or some day.
    void start();

    bool isDaemonRunning() const { return !m_owner.isEmpty(); }

    /// Calls `method` of org.freedesktop.Avahi.Server, which makes an object. Mute without a daemon.
    std::unique_ptr<AvahiObject> makeObject(
        const QString& method, const QVariantList& arguments, AvahiObject::Handlers handlers);

Q_SIGNALS:
    void daemonCame();
    void daemonWent();

private Q_SLOTS:
    void receiveSignal(const QDBusMessage& message);
    void loseBus();

private:
    friend class AvahiObject;
    static constexpr std::chrono::milliseconds shortestBusRetry = std::chrono::seconds(2);
    enum class Availability { unknown, noBus, silentBus, noDaemon, running };

    void tryBus();
    void connectToBus();
    void doWithoutBus(Availability why);
    void retryLater();
    void closeBus();
    void watchDaemon();
    void askForOwner();
    void activateDaemon();
    void setOwner(const QString& owner);
    void subscribe();
    void unsubscribe();
    void forgetObjects();
    void adopt(const std::shared_ptr<AvahiObject::State>& state, const QDBusMessage& reply);
    void introduce(const std::shared_ptr<AvahiObject::State>& state);
    void release(AvahiObject::State& state);
    void callBus(const QString& method, const QVariantList& arguments,
        std::function<void(const QDBusMessage&)> onReply);
    void call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> onReply);
    void setAvailability(Availability availability);

    SystemLog& m_log;
    BusProbe m_probe;
    QTimer m_busRetry;
    std::chrono::milliseconds m_untilBusRetry = shortestBusRetry;
    std::optional<QDBusConnection> m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_watcher;
    QString m_owner;             ///< the daemon's unique name on the bus, empty while there is none
    bool m_ownerIsKnown = false; ///< the bus has told, so an answer still on its way is old
    Availability m_availability = Availability::unknown;

    QHash<QString, std::shared_ptr<AvahiObject::State>> m_objects; ///< by path
    int m_unanswered = 0;                                          ///< objects whose path is not known yet
    /// Signals that came before the path of their object, by path
    QHash<QString, QList<QDBusMessage>> m_early;
};

} // namespace companion
