#include "simulator/Announcer.h"

#include "platform/posix/PosixInterfaceAddresses.h"

#include <QDBusError>
#include <QDBusMetaType>

#include <net/if.h>
#include <utility>

namespace companion::simulator {

namespace {

using namespace std::chrono_literals;

constexpr auto daemonName = "org.freedesktop.Avahi";
constexpr auto serverInterface = "org.freedesktop.Avahi.Server";
constexpr auto groupInterface = "org.freedesktop.Avahi.EntryGroup";
constexpr auto collisionError = "org.freedesktop.Avahi.CollisionError";

constexpr int serverRegistering = 1; // AvahiServerState
constexpr int serverRunning = 2;
constexpr int serverCollision = 3;
constexpr int groupEstablished = 2; // AvahiEntryGroupState
constexpr int groupCollision = 3;
constexpr int groupFailure = 4;
constexpr int anyProtocol = -1;

constexpr auto retryInterval = 1s;
constexpr int withdrawTimeoutMs = 500;

/// The index of the interface that has this address; -1, which to Avahi means all interfaces, if none has.
int interfaceOf(const std::string& ipv4)
{
    std::string name = ipv4.starts_with("127.") ? "lo" : ""; // which lists only one address of 127.0.0.0/8
    for (const auto& entry : PosixInterfaceAddresses().list().value_or(std::vector<InterfaceAddress>()))
        if (entry.address && entry.address->text == ipv4)
            name = entry.interfaceName;
    const unsigned index = if_nametoindex(name.c_str());
    return index > 0 ? static_cast<int>(index) : -1;
}

} // namespace

Announcer::Announcer(PanelState& state, EventLog& log, InstanceName name)
    : m_state(state)
    , m_log(log)
    , m_name(std::move(name))
{
    qDBusRegisterMetaType<QList<QByteArray>>();
    m_retry.setSingleShot(true);
    m_retry.setInterval(retryInterval);
    connect(&m_retry, &QTimer::timeout, this, &Announcer::daemonAppeared);
    connect(&m_bus, &SystemBus::stateChanged, this, &Announcer::busChanged);
    m_bus.connectToBus();
}

Announcer::~Announcer()
{
    if (!m_group.isEmpty() && m_bus.state() == SystemBus::State::connected)
        m_bus.connection().call(QDBusMessage::createMethodCall(daemonName, m_group, groupInterface, "Free"),
            QDBus::Block, withdrawTimeoutMs);
}

void Announcer::busChanged(SystemBus::State state)
{
    m_retry.stop();
    m_daemonWatcher.reset();
    if (state == SystemBus::State::connected) {
        subscribe();
        return daemonAppeared();
    }
    forgetGroup();
    logOnce(state == SystemBus::State::missing  ? "no system bus"
            : state == SystemBus::State::silent ? "the system bus does not reply"
                                                : "the system bus has gone");
}

void Announcer::subscribe()
{
    QDBusConnection& bus = m_bus.connection();
    bus.connect(
        daemonName, "/", serverInterface, "StateChanged", this, SLOT(serverStateChanged(int, QString)));
    // For all groups, since signals of ours may arrive before its path.
    bus.connect(daemonName, QString(), groupInterface, "StateChanged", this,
        SLOT(groupStateChanged(int, QString, QDBusMessage)));
    m_daemonWatcher = std::make_unique<QDBusServiceWatcher>(daemonName, bus);
    connect(
        m_daemonWatcher.get(), &QDBusServiceWatcher::serviceRegistered, this, [this] { daemonAppeared(); });
    connect(
        m_daemonWatcher.get(), &QDBusServiceWatcher::serviceUnregistered, this, [this] { daemonVanished(); });
}

void Announcer::daemonAppeared()
{
    m_retry.stop();
    ++m_generation;
    m_group.clear();
    callDaemon("/", serverInterface, "GetState", {}, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            return logOnce("no mDNS daemon"); // the watcher reports when one appears
        serverStateChanged(reply.arguments().value(0).toInt(), QString());
    });
}

void Announcer::forgetGroup()
{
    ++m_generation;
    m_group.clear();
    m_state.setAnnouncedAs(std::nullopt);
}

void Announcer::daemonVanished()
{
    forgetGroup();
    logOnce("the mDNS daemon has gone");
}

void Announcer::serverStateChanged(int state, const QString&)
{
    if (state == serverRunning && m_group.isEmpty())
        requestGroup();
    else if (state == serverRegistering || state == serverCollision)
        withdraw(); // its host name changes; it will be running again
}

void Announcer::requestGroup()
{
    ++m_generation;
    callDaemon("/", serverInterface, "EntryGroupNew", {}, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            return retryLater(reply.errorMessage().toStdString());
        m_group = reply.arguments().value(0).value<QDBusObjectPath>().path();
        addService();
    });
}

void Announcer::addService()
{
    const PanelSnapshot panel = m_state.snapshot();
    const QVariantList service{interfaceOf(panel.address), anyProtocol, 0U,
        QString::fromStdString(m_name.text(m_attempt)), "_airplay._tcp", QString(), QString(),
        QVariant::fromValue(panel.servicePort), QVariant::fromValue(QList<QByteArray>())};
    callGroup("AddService", service, [this](const QDBusMessage& reply) {
        if (reply.errorName() == collisionError)
            return nameTaken();
        if (reply.type() == QDBusMessage::ErrorMessage)
            return retryLater(reply.errorMessage().toStdString());
        commit();
    });
}

void Announcer::commit()
{
    callGroup("Commit", {}, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            return retryLater(reply.errorMessage().toStdString());
        // Its first signals may have been missed.
        callGroup("GetState", {}, [this](const QDBusMessage& current) {
            groupState(current.arguments().value(0).toInt(), QString());
        });
    });
}

void Announcer::groupStateChanged(int state, const QString& error, const QDBusMessage& signal)
{
    if (!m_group.isEmpty() && signal.path() == m_group)
        groupState(state, error);
}

void Announcer::groupState(int state, const QString& error)
{
    if (state == groupEstablished)
        established();
    else if (state == groupCollision)
        nameTaken();
    else if (state == groupFailure)
        retryLater(error.toStdString());
}

void Announcer::nameTaken()
{
    m_state.setAnnouncedAs(std::nullopt);
    const std::string taken = m_name.text(m_attempt);
    ++m_attempt;
    m_log.write("the name " + taken + " is taken, trying " + m_name.text(m_attempt));
    // Drops replies to the failed attempt.
    ++m_generation;
    callGroup("Reset", {}, [this](const QDBusMessage& reply) {
        if (reply.type() == QDBusMessage::ErrorMessage)
            return retryLater(reply.errorMessage().toStdString());
        addService();
    });
}

void Announcer::established()
{
    const std::string name = m_name.text(m_attempt);
    if (m_state.snapshot().announcedAs == name)
        return;
    m_logged.clear();
    m_state.setAnnouncedAs(name);
    m_log.write("announced as " + name);
}

void Announcer::withdraw()
{
    ++m_generation;
    m_state.setAnnouncedAs(std::nullopt);
    if (!m_group.isEmpty() && m_bus.state() == SystemBus::State::connected)
        m_bus.connection().asyncCall(
            QDBusMessage::createMethodCall(daemonName, m_group, groupInterface, "Free"));
    m_group.clear();
}

void Announcer::retryLater(const std::string& reason)
{
    withdraw();
    logOnce(reason);
    m_retry.start();
}

void Announcer::logOnce(const std::string& problem)
{
    if (m_logged.empty())
        m_log.write("not announced for now: " + problem);
    m_logged = problem;
}

void Announcer::callDaemon(const QString& path, const QString& interface, const QString& method,
    const QVariantList& arguments, OnReply then)
{
    if (m_bus.state() != SystemBus::State::connected)
        return; // its return is reported
    QDBusMessage message = QDBusMessage::createMethodCall(daemonName, path, interface, method);
    message.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, then = std::move(then), generation = m_generation](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            if (generation == m_generation)
                then(finished->reply());
        });
}

void Announcer::callGroup(const QString& method, const QVariantList& arguments, OnReply then)
{
    callDaemon(m_group, groupInterface, method, arguments, std::move(then));
}

} // namespace companion::simulator
