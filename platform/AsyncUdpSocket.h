#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace companion {

class AsyncUdpSocket;

/// Who sent a datagram, and when it arrived.
struct UdpSender {
    std::string host; ///< Numeric: "192.168.1.20", "fe80::1".
    std::uint16_t port = 0;

    /// When the datagram was read from the system, however long it then waited for the main thread.
    std::chrono::steady_clock::time_point receivedAt = {};
};

class AsyncUdpSocketDelegate {
public:
    virtual ~AsyncUdpSocketDelegate() = default;

    /// udpSocket:didReceiveData:fromAddress:withFilterContext:
    /// One datagram; `data` is valid during the call. Main thread, one at a time, in arrival order.
    virtual void udpSocketDidReceiveData(
        AsyncUdpSocket& socket, std::string_view data, const UdpSender& from) = 0;
};

/// A UDP socket that does its network work on a serial queue of its own and reports on the main queue.
///
/// Main thread only. It may be destroyed or closed from within its delegate's call; a closed socket delivers
/// nothing more. The failing operations return the error's description, or nothing when they succeeded.
class AsyncUdpSocket {
public:
    using Error = std::string;

    virtual ~AsyncUdpSocket() = default;

    virtual std::optional<Error> enableBroadcast(bool enabled) = 0;

    /// The port that the socket is connected to, 0 when not connected.
    virtual std::uint16_t connectedPort() const = 0;

    /// Binds to `port` on all local interfaces, shared with nobody; 0 picks a free port.
    virtual std::optional<Error> bindToPort(std::uint16_t port) = 0;

    /// Delivers every datagram from now on.
    virtual std::optional<Error> beginReceiving() = 0;

    /// Asks for one further datagram; nothing to do while `beginReceiving` is in force.
    virtual std::optional<Error> receiveOnce() = 0;

    virtual bool isClosed() const = 0;

    /// Closes at once: the port is free when it returns.
    virtual void close() = 0;
};

/// Makes unbound sockets.
class AsyncUdpSocketFactory {
public:
    virtual ~AsyncUdpSocketFactory() = default;

    /// `delegate` must outlive the socket; `queueLabel` names the socket's own thread.
    virtual std::unique_ptr<AsyncUdpSocket> makeSocket(
        AsyncUdpSocketDelegate& delegate, const std::string& queueLabel) = 0;
};

} // namespace companion
