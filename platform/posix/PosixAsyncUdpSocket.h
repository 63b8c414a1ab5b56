#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

#include <functional>
#include <memory>
#include <string>
#include <thread>

namespace companion {

class DatagramDelivery;

/// A UDP socket for IPv6 and IPv4. A thread of its own reads it, so that nothing is lost while the main thread is busy.
///
/// A port is never shared: no address-reuse flag is set, so that binding a port in use fails, and nobody can take ours.
class PosixAsyncUdpSocket : public AsyncUdpSocket {
public:
    /// What the system is asked for: a burst of 10,000 touches fits. It may grant less.
    static constexpr int wantedReceiveBuffer = 4 << 20;

    /// All must outlive the socket. `afterSlice`, which may be empty, is called on the main thread after a run of
    /// deliveries, before other jobs get their turn. `queueLabel` names the thread, cut to the 15 bytes that the system shows.
    PosixAsyncUdpSocket(AsyncUdpSocketDelegate& delegate, std::string queueLabel, MainQueue& mainQueue,
        SystemLog& log, std::function<void()> afterSlice = {});
    ~PosixAsyncUdpSocket() override;
    PosixAsyncUdpSocket(const PosixAsyncUdpSocket&) = delete;
    PosixAsyncUdpSocket& operator=(const PosixAsyncUdpSocket&) = delete;

    std::optional<Error> enableBroadcast(bool enabled) override;
    std::uint16_t connectedPort() const override { return 0; }
    std::optional<Error> bindToPort(std::uint16_t port) override;
    std::optional<Error> beginReceiving() override;
    std::optional<Error> receiveOnce() override;
    bool isClosed() const override { return m_isClosed; }
    void close() override;

    /// The port that the socket is bound to, 0 when it is not.
    std::uint16_t localPort() const;

    /// The bytes of receive buffer that the system granted.
    int receiveBuffer() const;

private:
    void open();
    void requestReceiveBuffer();
    std::optional<Error> unusable() const;
    std::optional<Error> startReceiving();
    void stopReceiving();
    void receive(const std::stop_token& stop);

    AsyncUdpSocketDelegate& m_delegate;
    const std::string m_queueLabel;
    MainQueue& m_mainQueue;
    SystemLog& m_log;
    const std::function<void()> m_afterSlice;

    int m_socket = -1;
    bool m_isIPv6 = true;
    bool m_isBound = false;
    bool m_isClosed = false;
    std::string m_openError;
    std::shared_ptr<DatagramDelivery> m_delivery;
    std::jthread m_thread;
};

/// Makes `PosixAsyncUdpSocket`s. Main thread only; the queue and the log must outlive the factory and its sockets.
class PosixAsyncUdpSocketFactory : public AsyncUdpSocketFactory {
public:
    PosixAsyncUdpSocketFactory(MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice = {});

    std::unique_ptr<AsyncUdpSocket> makeSocket(
        AsyncUdpSocketDelegate& delegate, const std::string& queueLabel) override;

private:
    MainQueue& m_mainQueue;
    SystemLog& m_log;
    const std::function<void()> m_afterSlice;
};

} // namespace companion
