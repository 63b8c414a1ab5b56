#include "platform/avahi/SystemBus.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <poll.h>
#include <QDBusError>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

// A client's first byte is a NUL; the bus replies to "AUTH" without a mechanism with the list of those that it supports
// (D-Bus Specification, "Authentication Protocol").
constexpr char greeting[] = "\0AUTH\r\n";
constexpr std::size_t greetingSize = sizeof greeting - 1;

/// As the D-Bus Specification has it in "Well-known Message Bus Instances".
QByteArray systemBusAddress()
{
    const QByteArray address = qgetenv("DBUS_SYSTEM_BUS_ADDRESS");
    return address.isEmpty() ? QByteArrayLiteral("unix:path=/var/run/dbus/system_bus_socket") : address;
}

QString uniqueConnectionName()
{
    static int serial = 0;
    return QStringLiteral("panel-companion-%1").arg(++serial);
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

/// The socket that the reply will come from, or -1 with the reason in errno.
int greet(const UnixSocketAddress& bus)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd >= 0 && ::connect(fd, reinterpret_cast<const sockaddr*>(&bus.name), bus.length) == 0
        && send(fd, greeting, greetingSize, MSG_NOSIGNAL) == ssize_t(greetingSize))
        return fd;
    const int error = errno;
    if (fd >= 0)
        close(fd);
    errno = error;
    return -1;
}

bool isBacklogFull()
{
    return errno == EAGAIN;
}

} // namespace

bool isBusSilent(const QByteArray& busAddress, std::chrono::milliseconds longest)
{
    const auto address = UnixSocketAddress::ofBus(busAddress);
    if (!address)
        return false;
    const int fd = greet(*address);
    if (fd < 0)
        return isBacklogFull();
    pollfd reply{fd, POLLIN, 0};
    const bool isSilent = poll(&reply, 1, static_cast<int>(longest.count())) == 0;
    close(fd);
    return isSilent;
}

std::optional<UnixSocketAddress> UnixSocketAddress::ofBus(const QByteArray& busAddress)
{
    static const QByteArray transport = "unix:";
    if (!busAddress.startsWith(transport) || busAddress.contains(';'))
        return std::nullopt;
    UnixSocketAddress address = {};
    address.name.sun_family = AF_UNIX;
    for (const QByteArray& pair : busAddress.mid(transport.size()).split(',')) {
        const auto equals = pair.indexOf('=');
        const QByteArray key = pair.left(equals);
        const bool isAbstract = key == "abstract";
        if (!isAbstract && key != "path")
            continue;
        QByteArray name = QByteArray::fromPercentEncoding(pair.mid(equals + 1));
        // As unix(7) has it: a NUL begins an abstract name, and ends a path.
        name.insert(isAbstract ? 0 : name.size(), '\0');
        if (std::size_t(name.size()) > sizeof address.name.sun_path)
            return std::nullopt;
        std::copy(name.begin(), name.end(), address.name.sun_path);
        address.length = socklen_t(offsetof(sockaddr_un, sun_path) + std::size_t(name.size()));
        return address;
    }
    return std::nullopt;
}

SystemBus::SystemBus(QObject* parent)
    : QObject(parent)
{
    m_probeTimeout.setSingleShot(true);
    connect(&m_probeTimeout, &QTimer::timeout, this, [this] { fail(State::silent, QString()); });
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &SystemBus::probe);
}

SystemBus::~SystemBus()
{
    endProbe();
    closeConnection();
}

void SystemBus::connectToBus()
{
    if (!m_connection && m_probeFd < 0 && !m_retry.isActive())
        probe();
}

SystemBus::State SystemBus::waitForConnection(std::chrono::milliseconds timeout)
{
    connectToBus();
    pollfd reply{m_probeFd, POLLIN, 0};
    if (m_probeFd >= 0 && poll(&reply, 1, static_cast<int>(timeout.count())) > 0)
        readReply();
    if (m_probeFd >= 0)
        fail(State::silent, QString());
    return m_state;
}

void SystemBus::probe()
{
    const auto address = UnixSocketAddress::ofBus(systemBusAddress());
    if (!address)
        return openConnection();
    m_probeFd = greet(*address);
    if (m_probeFd < 0)
        return fail(isBacklogFull() ? State::silent : State::missing, systemError());
    m_probeReply = new QSocketNotifier(m_probeFd, QSocketNotifier::Read, this);
    connect(m_probeReply, &QSocketNotifier::activated, this, &SystemBus::readReply);
    m_probeTimeout.start(replyTimeout);
}

void SystemBus::readReply()
{
    char first = 0;
    const ssize_t count = recv(m_probeFd, &first, 1, 0);
    if (count < 0 && (errno == EAGAIN || errno == EINTR))
        return;
    if (count <= 0)
        return fail(State::missing, QStringLiteral("connection closed by the bus"));
    endProbe();
    openConnection();
}

void SystemBus::endProbe()
{
    m_probeTimeout.stop();
    if (m_probeReply) {
        m_probeReply->setEnabled(false);
        std::exchange(m_probeReply, nullptr)->deleteLater(); // it may be the sender of the current signal
    }
    if (m_probeFd >= 0)
        close(std::exchange(m_probeFd, -1));
}

void SystemBus::openConnection()
{
    m_connection = QDBusConnection::connectToBus(QDBusConnection::SystemBus, uniqueConnectionName());
    if (!m_connection->isConnected())
        return fail(State::missing, m_connection->lastError().message());
    m_untilRetry = shortestRetry;
    m_connection->connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
        QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
        SLOT(loseConnection()));
    setState(State::connected);
}

void SystemBus::loseConnection()
{
    fail(State::missing, QStringLiteral("connection lost"));
}

void SystemBus::closeConnection()
{
    if (!m_connection)
        return;
    const QString name = m_connection->name();
    m_connection.reset();
    QDBusConnection::disconnectFromBus(name);
}

void SystemBus::fail(State state, const QString& error)
{
    endProbe();
    m_error = error;
    setState(state); // its receivers may still use a connection that was lost
    closeConnection();
    // A computer without a bus may never get one: it must not cause wake-ups all day.
    m_retry.start(m_untilRetry);
    m_untilRetry = std::min(m_untilRetry * 2, longestRetry);
}

void SystemBus::setState(State state)
{
    if (std::exchange(m_state, state) != state)
        Q_EMIT stateChanged(state);
}

} // namespace companion
