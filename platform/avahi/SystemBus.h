#pragma once

#include <chrono>
#include <optional>
#include <QByteArray>
#include <QDBusConnection>
#include <QObject>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>
#include <sys/un.h>

namespace companion {

/// The address of a D-Bus bus that is one Unix socket, a path or an abstract name (D-Bus Specification, "Server
/// Addresses"); nothing for any other transport or a list of addresses.
struct UnixSocketAddress {
    sockaddr_un name;
    socklen_t length; ///< of the part of `name` that counts
    static std::optional<UnixSocketAddress> ofBus(const QByteArray& busAddress);
};

/// Whether the bus takes connections but does not reply within the time. False for one that cannot be asked: any but a
/// Unix socket. Waits for the reply.
bool isBusSilent(const QByteArray& busAddress, std::chrono::milliseconds longest);

/// A connection of its own to the system bus, which never blocks the caller. Main thread only; needs an event loop.
///
/// libdbus can only connect synchronously, and a bus that accepts the connection but never replies would block it
/// forever, together with every other user of QtDBus. So the bus is first sent a greeting through a socket, and libdbus
/// connects once it has replied to that. A bus that is not a Unix socket cannot be probed in this way.
class SystemBus : public QObject {
    Q_OBJECT

public:
    enum class State {
        connecting,
        connected,
        missing, ///< `error` tells why
        silent,  ///< it accepts connections but has not replied for two seconds
    };

    explicit SystemBus(QObject* parent = nullptr);
    ~SystemBus() override;

    /// Connects, and reconnects when the connection is lost: first after two seconds, then after twice as long each time,
    /// up to half a minute. Idempotent.
    void connectToBus();

    /// Blocks until the first attempt has succeeded or failed, which counts as `silent` after `timeout`.
    State waitForConnection(std::chrono::milliseconds timeout);

    State state() const { return m_state; }
    const QString& error() const { return m_error; }

    /// To be used only while connected.
    QDBusConnection& connection() { return *m_connection; }

Q_SIGNALS:
    /// Emitted for each change, possibly from within connectToBus.
    void stateChanged(companion::SystemBus::State state);

private Q_SLOTS:
    void loseConnection();

private:
    static constexpr std::chrono::milliseconds replyTimeout = std::chrono::seconds(2);
    static constexpr std::chrono::milliseconds shortestRetry = std::chrono::seconds(2);
    static constexpr std::chrono::milliseconds longestRetry = std::chrono::seconds(30);

    void probe();
    void readReply();
    void endProbe();
    void openConnection();
    void closeConnection();
    void fail(State state, const QString& error);
    void setState(State state);

    State m_state = State::connecting;
    QString m_error;
    int m_probeFd = -1;
    QSocketNotifier* m_probeReply = nullptr;
    QTimer m_probeTimeout;
    QTimer m_retry;
    std::chrono::milliseconds m_untilRetry = shortestRetry;
    std::optional<QDBusConnection> m_connection;
};

} // namespace companion
