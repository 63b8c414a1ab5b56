#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

namespace companion {

class DatagramDelivery;
class UdpReceiver;

/// A UDP socket for IPv6 and IPv4 that loses nothing while the main thread is busy. A port is never shared: no
/// address-reuse flag is set, so a port that somebody has is an error, and nobody can take ours.
class PosixAsyncUdpSocket : public AsyncUdpSocket {
public:
    /// What is asked of the system: a burst of 10,000 touches fits. The system may grant less.
    static constexpr int wantedReceiveBuffer = 4 << 20;

    /// All must outlive the socket; the main queue's jobs may outlive it. `afterSlice`, which may be empty, is
    /// called on the main thread after each run of datagrams that were delivered in one go, and so is `afterClose`
    /// once the socket is closed.
    PosixAsyncUdpSocket(AsyncUdpSocketDelegate& delegate, std::string queueLabel, MainQueue& mainQueue,
        SystemLog& log, std::function<void()> afterSlice, std::function<void()> afterClose = {});
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
    void askForReceiveBuffer();
    std::optional<Error> unusable() const;
    std::optional<Error> startReceiver();
    void closeDelivery();

    AsyncUdpSocketDelegate& m_delegate;
    const std::string m_queueLabel;
    MainQueue& m_mainQueue;
    SystemLog& m_log;
    const std::function<void()> m_afterSlice;
    const std::function<void()> m_afterClose;

    int m_socket = -1;
    bool m_isIPv6 = true;
    bool m_isBound = false;
    bool m_isClosed = false;
    std::string m_openError;
    std::shared_ptr<DatagramDelivery> m_delivery;
    std::unique_ptr<UdpReceiver> m_receiver;
};

} // namespace companion
