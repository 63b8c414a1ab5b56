#include "platform/posix/PosixAsyncUdpSocket.h"

#include "platform/posix/DatagramDelivery.h"
#include "platform/posix/UdpReceiver.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

std::string errorText(int error)
{
    return std::generic_category().message(error);
}

bool setOption(int socket, int level, int option, int value)
{
    return setsockopt(socket, level, option, &value, sizeof value) == 0;
}

} // namespace

PosixAsyncUdpSocket::PosixAsyncUdpSocket(AsyncUdpSocketDelegate& delegate, std::string queueLabel,
    MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice, std::function<void()> afterClose)
    : m_delegate(delegate)
    , m_queueLabel(std::move(queueLabel))
    , m_mainQueue(mainQueue)
    , m_log(log)
    , m_afterSlice(std::move(afterSlice))
    , m_afterClose(std::move(afterClose))
{
    open();
}

PosixAsyncUdpSocket::~PosixAsyncUdpSocket()
{
    close();
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::enableBroadcast(bool enabled)
{
    if (const auto error = unusable())
        return error;
    if (!setOption(m_socket, SOL_SOCKET, SO_BROADCAST, enabled ? 1 : 0))
        return errorText(errno);
    return std::nullopt;
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::bindToPort(std::uint16_t port)
{
    if (const auto error = unusable())
        return error;

    sockaddr_storage storage{};
    socklen_t size = 0;
    if (m_isIPv6) {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = htons(port);
        address.sin6_addr = in6addr_any;
        std::memcpy(&storage, &address, size = sizeof address);
    } else {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        std::memcpy(&storage, &address, size = sizeof address);
    }
    if (bind(m_socket, reinterpret_cast<const sockaddr*>(&storage), size) != 0)
        return errorText(errno);
    m_isBound = true;
    return std::nullopt;
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::beginReceiving()
{
    if (auto error = startReceiver())
        return error;
    m_delivery->deliverAll();
    return std::nullopt;
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::receiveOnce()
{
    if (auto error = startReceiver())
        return error;
    m_delivery->deliverOne();
    return std::nullopt;
}

void PosixAsyncUdpSocket::close()
{
    if (std::exchange(m_isClosed, true))
        return;
    m_receiver.reset();
    if (m_socket >= 0)
        ::close(std::exchange(m_socket, -1));
    closeDelivery();
    if (m_afterClose)
        m_afterClose();
}

void PosixAsyncUdpSocket::closeDelivery()
{
    if (!m_delivery)
        return;
    m_delivery->close();
    // A wake-up that is still queued, or the slice that this is called from, names the delivery by address;
    // the queue is first in, first out, so that a job put in now is the last one that can.
    if (m_delivery->isWakePending())
        m_mainQueue.async([delivery = m_delivery] {});
    m_delivery.reset();
}

std::uint16_t PosixAsyncUdpSocket::localPort() const
{
    sockaddr_in6 address{}; // the port has the same place in an IPv4 address
    socklen_t size = sizeof address;
    if (!m_isBound || getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        return 0;
    return ntohs(address.sin6_port);
}

int PosixAsyncUdpSocket::receiveBuffer() const
{
    int bytes = 0;
    socklen_t size = sizeof bytes;
    if (getsockopt(m_socket, SOL_SOCKET, SO_RCVBUF, &bytes, &size) != 0)
        return 0;
    return bytes
        / 2; // Linux doubles what it is asked for, for its own book-keeping, and tells the double: socket(7)
}

void PosixAsyncUdpSocket::open()
{
    m_socket = socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_socket >= 0 && !setOption(m_socket, IPPROTO_IPV6, IPV6_V6ONLY, 0))
        ::close(std::exchange(m_socket, -1));
    if (m_socket < 0) {
        m_isIPv6 = false;
        m_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    }
    if (m_socket < 0)
        m_openError = errorText(errno);
    else
        askForReceiveBuffer();
}

void PosixAsyncUdpSocket::askForReceiveBuffer()
{
    // The first one may go beyond the system's limit, where the process has the right to.
    if (!setOption(m_socket, SOL_SOCKET, SO_RCVBUFFORCE, wantedReceiveBuffer))
        setOption(m_socket, SOL_SOCKET, SO_RCVBUF, wantedReceiveBuffer);
    const int granted = receiveBuffer();
    if (granted < wantedReceiveBuffer)
        m_log.log(m_queueLabel + ": receive buffer of " + std::to_string(granted)
            + " bytes; with net.core.rmem_max=" + std::to_string(wantedReceiveBuffer)
            + " bursts of 10,000 touches fit");
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::unusable() const
{
    if (m_isClosed)
        return "The socket is closed";
    if (m_socket < 0)
        return m_openError;
    return std::nullopt;
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::startReceiver()
{
    if (auto error = unusable())
        return error;
    if (!m_isBound)
        return "The socket is not bound to a port";
    if (m_receiver)
        return std::nullopt;
    m_delivery = std::make_shared<DatagramDelivery>(*this, m_delegate, m_mainQueue, m_afterSlice);
    try {
        m_receiver = std::make_unique<UdpReceiver>(m_socket, m_delivery, m_mainQueue, m_log, m_queueLabel);
    } catch (const std::system_error& noThread) {
        return noThread.what();
    }
    return std::nullopt;
}

} // namespace companion
