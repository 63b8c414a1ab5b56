#include "platform/avahi/AvahiClient.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <limits>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

const QString daemonName = QStringLiteral("org.freedesktop.Avahi");
const QString serverInterface = QStringLiteral("org.freedesktop.Avahi.Server");
const QString busName = QStringLiteral("org.freedesktop.DBus");

constexpr std::chrono::milliseconds longestBusRetry = 30s;

// An answer that came after a time-out would leave an object behind in the daemon that nobody frees; the bus itself
// answers when the daemon dies.
constexpr int noTimeout = std::numeric_limits<int>::max();

struct Signal {
    const char* interface;
    const char* member;
};
constexpr Signal signalsOfInterest[] = {
    {"org.freedesktop.Avahi.ServiceBrowser", "ItemNew"},
    {"org.freedesktop.Avahi.ServiceBrowser", "ItemRemove"},
    {"org.freedesktop.Avahi.ServiceBrowser", "AllForNow"},
    {"org.freedesktop.Avahi.ServiceBrowser", "Failure"},
    {"org.freedesktop.Avahi.ServiceResolver", "Found"},
    {"org.freedesktop.Avahi.ServiceResolver", "Failure"},
};

QString uniqueConnectionName()
{
    static std::atomic<int> serial = 0;
    return QStringLiteral("service-browser-%1").arg(++serial);
}

/// As the D-Bus Specification has it in "Well-known Message Bus Instances".
QByteArray systemBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address.isEmpty() ? QByteArrayLiteral("unix:path=/var/run/dbus/system_bus_socket") : address;
}

bool isError(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ErrorMessage;
}

} // namespace

/// Outlives the AvahiObject where a call or a signal of it is being worked on.
struct AvahiObject::State {
    Handlers handlers;
    QString owner;     ///< the daemon that it was asked of
    QString path;      ///< empty until the daemon has answered
    QString interface; ///< for example "org.freedesktop.Avahi.ServiceResolver"
    bool isReleased = false;
};

AvahiObject::AvahiObject(AvahiClient& client, std::shared_ptr<State> state)
    : m_client(client)
    , m_state(std::move(state))
{
}

AvahiObject::~AvahiObject()
{
    m_state->isReleased = true;
    m_client.release(*m_state);
}

AvahiClient::AvahiClient(SystemLog& log)
    : m_log(log)
    , m_probe([this](BusProbe::Result result) {
        if (result == BusProbe::Result::answers)
            connectToBus();
        else
            doWithoutBus(result == BusProbe::Result::silent ? Availability::silentBus : Availability::noBus);
    })
{
    m_busRetry.setSingleShot(true);
    connect(&m_busRetry, &QTimer::timeout, this, &AvahiClient::tryBus);
}

AvahiClient::~AvahiClient()
{
    closeBus();
}

void AvahiClient::start()
{
    if (!m_bus && !m_probe.isRunning() && !m_busRetry.isActive())
        tryBus();
}

std::unique_ptr<AvahiObject> AvahiClient::makeObject(
    const QString& method, const QVariantList& arguments, AvahiObject::Handlers handlers)
{
    auto state = std::make_shared<AvahiObject::State>();
    state->handlers = std::move(handlers);
    state->owner = m_owner;
    state->interface = daemonName + u'.' + method.chopped(3); // without the "New"
    if (isDaemonRunning()) {
        QDBusMessage message =
            QDBusMessage::createMethodCall(m_owner, QStringLiteral("/"), serverInterface, method);
        message.setArguments(arguments);
        ++m_unanswered;
        call(message, [this, state](const QDBusMessage& reply) { adopt(state, reply); });
    }
    return std::unique_ptr<AvahiObject>(new AvahiObject(*this, std::move(state)));
}

void AvahiClient::tryBus()
{
    m_probe.start(systemBusAddress());
}

void AvahiClient::connectToBus()
{
    m_bus = QDBusConnection::connectToBus(QDBusConnection::SystemBus, uniqueConnectionName());
    if (!m_bus->isConnected()) {
        closeBus();
        return doWithoutBus(Availability::noBus);
    }
    m_untilBusRetry = shortestBusRetry;
    m_bus->connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this, SLOT(loseBus()));
    watchDaemon();
    askForOwner();
}

void AvahiClient::closeBus()
{
    m_watcher.reset();
    if (!m_bus)
        return;
    const QString name = m_bus->name();
    m_bus.reset();
    QDBusConnection::disconnectFromBus(name);
}

void AvahiClient::loseBus()
{
    setOwner(QString());
    closeBus();
    doWithoutBus(Availability::noBus);
}

void AvahiClient::doWithoutBus(Availability why)
{
    setAvailability(why);
    retryLater();
}

// A computer without a bus may never get one, and is not to be woken for it all day.
void AvahiClient::retryLater()
{
    m_busRetry.start(m_untilBusRetry);
    m_untilBusRetry = std::min(m_untilBusRetry * 2, longestBusRetry);
}

void AvahiClient::watchDaemon()
{
    m_watcher =
        std::make_unique<QDBusServiceWatcher>(daemonName, *m_bus, QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) {
            m_ownerIsKnown = true;
            setAvailability(owner.isEmpty() ? Availability::noDaemon : Availability::running);
            setOwner(owner);
        });
}

void AvahiClient::askForOwner()
{
    m_ownerIsKnown = false;
    callBus(QStringLiteral("GetNameOwner"), {daemonName}, [this](const QDBusMessage& reply) {
        if (m_ownerIsKnown)
            return;
        if (isError(reply))
            return activateDaemon();
        setAvailability(Availability::running);
        setOwner(reply.arguments().value(0).toString());
    });
}

// Where the system starts the daemon on demand, this is the demand. Elsewhere it is an error that changes nothing.
void AvahiClient::activateDaemon()
{
    callBus(QStringLiteral("StartServiceByName"), {daemonName, 0u}, [this](const QDBusMessage& reply) {
        if (isError(reply) && !m_ownerIsKnown)
            setAvailability(Availability::noDaemon);
    });
}

void AvahiClient::setOwner(const QString& owner)
{
    if (owner == m_owner)
        return;
    if (isDaemonRunning()) {
        unsubscribe();
        forgetObjects();
        m_owner.clear();
        Q_EMIT daemonWent();
    }
    // On a bus that is gone and has yet to tell so, libdbus would end the process when Qt subscribes (Qt 6.4).
    if (!owner.isEmpty() && m_bus->isConnected()) {
        m_owner = owner;
        subscribe();
        Q_EMIT daemonCame();
    }
}

// One match rule a signal, for objects of every path: a rule for each of a thousand resolvers would cost more than
// resolving. The unique name, rather than the well-known one, spares Qt a blocking look-up of its owner.
void AvahiClient::subscribe()
{
    for (const auto& [interface, member] : signalsOfInterest)
        m_bus->connect(m_owner, QString(), QLatin1String(interface), QLatin1String(member), this,
            SLOT(receiveSignal(QDBusMessage)));
}

void AvahiClient::unsubscribe()
{
    for (const auto& [interface, member] : signalsOfInterest)
        m_bus->disconnect(m_owner, QString(), QLatin1String(interface), QLatin1String(member), this,
            SLOT(receiveSignal(QDBusMessage)));
}

void AvahiClient::forgetObjects()
{
    m_objects.clear();
    m_early.clear();
    m_unanswered = 0;
}

void AvahiClient::receiveSignal(const QDBusMessage& message)
{
    if (message.service() != m_owner) // of a daemon that has gone meanwhile
        return;
    const auto found = m_objects.constFind(message.path());
    if (found != m_objects.constEnd()) {
        const auto state = found.value();
        state->handlers.onSignal(message.member(), message.arguments());
    } else if (m_unanswered > 0) {
        m_early[message.path()].append(message);
    }
}

void AvahiClient::adopt(const std::shared_ptr<AvahiObject::State>& state, const QDBusMessage& reply)
{
    if (state->owner != m_owner)
        return;
    --m_unanswered;
    if (!isError(reply)) {
        state->path = reply.arguments().value(0).value<QDBusObjectPath>().path();
        introduce(state);
    } else if (!state->isReleased) {
        state->handlers.onRefused(reply.errorName());
    }
    if (m_unanswered == 0)
        m_early.clear();
}

// The daemon begins to work before it answers with the object's path, so what the object had to say may be here
// already.
void AvahiClient::introduce(const std::shared_ptr<AvahiObject::State>& state)
{
    if (state->isReleased)
        return release(*state);
    m_objects.insert(state->path, state);
    const QList<QDBusMessage> early = m_early.take(state->path);
    for (const QDBusMessage& message : early)
        if (!state->isReleased)
            state->handlers.onSignal(message.member(), message.arguments());
}

void AvahiClient::release(AvahiObject::State& state)
{
    if (state.path.isEmpty() || state.owner != m_owner)
        return;
    m_objects.remove(state.path);
    // Freeing one that is gone already is an error nobody needs to hear of: no reply is asked for.
    m_bus->send(QDBusMessage::createMethodCall(m_owner, state.path, state.interface, QStringLiteral("Free")));
}

void AvahiClient::callBus(
    const QString& method, const QVariantList& arguments, std::function<void(const QDBusMessage&)> onReply)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName, method);
    message.setArguments(arguments);
    // Once the bus has gone, the error that stands for the answer says nothing about the daemon.
    call(message, [this, onReply = std::move(onReply)](const QDBusMessage& reply) {
        if (m_bus && m_bus->isConnected())
            onReply(reply);
    });
}

void AvahiClient::call(const QDBusMessage& message, std::function<void(const QDBusMessage&)> onReply)
{
    auto* watcher = new QDBusPendingCallWatcher(m_bus->asyncCall(message, noTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [onReply = std::move(onReply)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            onReply(finished->reply());
        });
}

void AvahiClient::setAvailability(Availability availability)
{
    const Availability before = std::exchange(m_availability, availability);
    if (before == availability)
        return;
    if (availability == Availability::noBus)
        m_log.log("mDNS: there is no system bus to reach the Avahi daemon by");
    else if (availability == Availability::silentBus)
        m_log.log("mDNS: the system bus, by which the Avahi daemon is reached, does not answer");
    else if (availability == Availability::noDaemon)
        m_log.log("mDNS: the Avahi daemon is not running");
    else if (before != Availability::unknown)
        m_log.log("mDNS: the Avahi daemon is running");
}

} // namespace companion
