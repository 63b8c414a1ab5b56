#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <QByteArray>
#include <QObject>
#include <QSocketNotifier>
#include <QTimer>
#include <sys/un.h>

namespace companion {

/// The address of a D-Bus bus that is one Unix socket, a path or an abstract name, by the D-Bus Specification's "Server
/// Addresses"; nothing for what listens in another way, or at more than one place.
struct UnixSocketAddress {
    sockaddr_un name;
    socklen_t length; ///< of the part of `name` that counts
    static std::optional<UnixSocketAddress> ofBus(const QByteArray& busAddress);
};

/// Finds out whether a D-Bus bus answers, without waiting for it: libdbus can connect only in a way that holds up its
/// caller for as long as a bus takes the connection and keeps silent. Main thread only.
class BusProbe : public QObject {
    Q_OBJECT

public:
    enum class Result {
        answers, ///< or nothing is known against it, since it does not listen at a Unix socket
        missing,
        silent ///< it said nothing for two seconds
    };

    explicit BusProbe(std::function<void(Result)> onResult);
    ~BusProbe() override;

    /// Asks; one call of `onResult` follows, possibly before this returns. Not while it is running.
    void start(const QByteArray& busAddress);

    bool isRunning() const { return m_fd >= 0; }

private:
    static constexpr std::chrono::milliseconds patience = std::chrono::seconds(2);

    void readAnswer();
    void finish(Result result);
    void close();

    std::function<void(Result)> m_onResult;
    int m_fd = -1;
    QSocketNotifier* m_answer = nullptr;
    QTimer m_patience;
};

} // namespace companion
