#include "platform/avahi/AvahiClient.h"

#include <limits>
#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <utility>

namespace companion {

namespace {

const QString daemonName = QStringLiteral("org.freedesktop.Avahi");
const QString serverInterface = QStringLiteral("org.freedesktop.Avahi.Server");
const QString busName = QStringLiteral("org.freedesktop.DBus");

// A reply after a time-out would leave an object behind in the daemon that nobody frees; the bus itself replies when the
// daemon dies.
constexpr int noTimeout = std::numeric_limits<int>::max();

// The bus refuses a connection's 129th unanswered call; from 32 on, more make nothing faster.
constexpr int maxUnanswered = 32;

constexpr std::string_view running = "mDNS: the Avahi daemon is running";

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

bool isError(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ErrorMessage;
}

} // namespace

AvahiObject::~AvahiObject()
{
    if (!m_path.isEmpty())
        m_client.free(m_type, m_path);
}

AvahiClient::AvahiClient(SystemLog& log)
    : m_log(log)
    , m_status(running)
{
    connect(&m_bus, &SystemBus::stateChanged, this, &AvahiClient::changeBus);
}

std::shared_ptr<AvahiObject> AvahiClient::makeObject(
    const AvahiObjectType& type, const QVariantList& arguments, AvahiObject::Handlers handlers)
{
    auto object = std::make_shared<AvahiObject>(*this, type, std::move(handlers));
    if (isDaemonRunning()) {
        m_requests.push_back({object, type, arguments});
        sendRequests();
    }
    return object;
}

void AvahiClient::changeBus(SystemBus::State state)
{
    if (state == SystemBus::State::connected) {
        watchDaemon();
        return askForOwner();
    }
    m_watcher.reset();
    setOwner(QString());
    logStatus(state == SystemBus::State::silent
            ? "mDNS: the system bus, by which the Avahi daemon is reached, does not answer"
            : "mDNS: there is no system bus to reach the Avahi daemon by");
}

void AvahiClient::watchDaemon()
{
    m_watcher = std::make_unique<QDBusServiceWatcher>(
        daemonName, m_bus.connection(), QDBusServiceWatcher::WatchForOwnerChange);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) {
            m_ownerIsKnown = true;
            setOwner(owner);
            logStatus(owner.isEmpty() ? "mDNS: the Avahi daemon is not running" : running);
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
        setOwner(reply.arguments().value(0).toString());
        logStatus(running);
    });
}

// Starts the daemon where the system does so on demand; elsewhere this is an error without consequences.
void AvahiClient::activateDaemon()
{
    callBus(QStringLiteral("StartServiceByName"), {daemonName, 0u}, [this](const QDBusMessage& reply) {
        if (isError(reply) && !m_ownerIsKnown)
            logStatus("mDNS: the Avahi daemon is not running");
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
    }
    // If the bus has gone and Qt has yet to report it, subscribing would make libdbus end the process (Qt 6.4).
    if (!owner.isEmpty() && m_bus.connection().isConnected()) {
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
        m_bus.connection().connect(m_owner, QString(), QLatin1String(interface), QLatin1String(member), this,
            SLOT(receiveSignal(QDBusMessage)));
}

void AvahiClient::unsubscribe()
{
    for (const auto& [interface, member] : signalsOfInterest)
        m_bus.connection().disconnect(m_owner, QString(), QLatin1String(interface), QLatin1String(member),
            this, SLOT(receiveSignal(QDBusMessage)));
}

void AvahiClient::forgetObjects()
{
    ++m_daemon;
    m_requests.clear();
    m_unanswered = 0;
    for (const auto& object : std::exchange(m_objects, {}))
        object.lock()->m_path.clear();
    m_early.clear();
}

void AvahiClient::sendRequests()
{
    while (m_unanswered < maxUnanswered && !m_requests.empty()) {
        const Request request = std::move(m_requests.front());
        m_requests.pop_front();
        if (request.object.expired())
            continue;
        QDBusMessage message = QDBusMessage::createMethodCall(
            m_owner, QStringLiteral("/"), serverInterface, QLatin1String(request.type.constructor));
        message.setArguments(request.arguments);
        ++m_unanswered;
        call(message, [this, request, daemon = m_daemon](const QDBusMessage& reply) {
            if (daemon == m_daemon)
                receiveReply(request, reply);
        });
    }
}

void AvahiClient::receiveReply(const Request& request, const QDBusMessage& reply)
{
    --m_unanswered;
    const auto object = request.object.lock();
    if (isError(reply)) {
        if (object)
            object->m_handlers.onRefused(reply.errorName());
    } else {
        const QString path = reply.arguments().value(0).value<QDBusObjectPath>().path();
        if (object)
            m_objects.insert(object->m_path = path, object);
        else
            free(request.type, path);
        for (const QDBusMessage& message : m_early.take(path))
            receiveSignal(message);
    }
    if (m_unanswered == 0)
        m_early.clear();
    sendRequests();
}

void AvahiClient::receiveSignal(const QDBusMessage& message)
{
    if (message.service() != m_owner) // of a daemon that has gone meanwhile
        return;
    if (const auto object = m_objects.value(message.path()).lock())
        object->m_handlers.onSignal(message.member(), message.arguments());
    else if (m_unanswered > 0)
        m_early[message.path()].append(message);
}

void AvahiClient::free(const AvahiObjectType& type, const QString& path)
{
    m_objects.remove(path);
    // It may be gone already, which is an error of no interest: no reply is requested.
    m_bus.connection().send(
        QDBusMessage::createMethodCall(m_owner, path, QLatin1String(type.interface), QStringLiteral("Free")));
}

void AvahiClient::callBus(const QString& method, const QVariantList& arguments, OnReply onReply)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(busName, QStringLiteral("/org/freedesktop/DBus"), busName, method);
    message.setArguments(arguments);
    // Once the bus has gone, the error in place of a reply says nothing about the daemon.
    call(message, [this, onReply = std::move(onReply)](const QDBusMessage& reply) {
        if (m_bus.state() == SystemBus::State::connected && m_bus.connection().isConnected())
            onReply(reply);
    });
}

void AvahiClient::call(const QDBusMessage& message, OnReply onReply)
{
    auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(message, noTimeout), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [onReply = std::move(onReply)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            onReply(finished->reply());
        });
}

void AvahiClient::logStatus(std::string_view status)
{
    if (std::exchange(m_status, status) != status)
        m_log.log(status);
}

} // namespace companion
