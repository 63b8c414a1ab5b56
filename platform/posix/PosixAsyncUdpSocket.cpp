#include "platform/posix/PosixAsyncUdpSocket.h"

#include "platform/posix/BlockedSignals.h"
#include "platform/posix/DatagramDelivery.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <netinet/in.h>
#include <pthread.h>
#include <span>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace companion {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr auto refusalLineInterval = 1s;
constexpr auto pauseAfterError = 1s;

std::string errorText(int error)
{
    return std::generic_category().message(error);
}

bool setOption(int socket, int level, int option, int value)
{
    return setsockopt(socket, level, option, &value, sizeof value) == 0;
}

DatagramSource sourceOf(const sockaddr_in6& sender)
{
    if (sender.sin6_family == AF_INET6)
        return {sender.sin6_addr, ntohs(sender.sin6_port)};
    sockaddr_in address;
    std::memcpy(&address, &sender, sizeof address);
    DatagramSource source;
    source.port = ntohs(address.sin_port);
    source.address.s6_addr[10] = 0xFF;
    source.address.s6_addr[11] = 0xFF;
    std::memcpy(source.address.s6_addr + 12, &address.sin_addr, 4);
    return source;
}

/// A signal, or what the network reports about single datagrams (ICMP): the next read is as good as any.
bool isTransient(int error)
{
    switch (error) {
    case EINTR:
    case ECONNREFUSED:
    case ECONNRESET:
    case EHOSTUNREACH:
    case ENETUNREACH:
    case ENETDOWN:
        return true;
    default:
        return false;
    }
}

/// Room for the datagrams of one system call.
class Batch {
public:
    Batch()
    {
        for (std::size_t i = 0; i < size; ++i) {
            m_vectors[i] = {m_data.get() + i * longestDatagram, longestDatagram};
            m_messages[i].msg_hdr.msg_iov = &m_vectors[i];
            m_messages[i].msg_hdr.msg_iovlen = 1;
            m_messages[i].msg_hdr.msg_name = &m_senders[i];
        }
    }

    /// Waits for a datagram and takes what has come with it; the number of datagrams, or -1 with `errno`.
    int receive(int socket)
    {
        for (mmsghdr& message : m_messages)
            message.msg_hdr.msg_namelen = sizeof m_senders[0];
        return recvmmsg(socket, m_messages.data(), size, MSG_WAITFORONE, nullptr);
    }

    DatagramSource source(std::size_t i) const { return sourceOf(m_senders[i]); }
    std::string_view data(std::size_t i) const
    {
        return {m_data.get() + i * longestDatagram, m_messages[i].msg_len};
    }

private:
    static constexpr std::size_t size = 16;
    static constexpr std::size_t longestDatagram = 65'536;

    const std::unique_ptr<char[]> m_data = std::make_unique_for_overwrite<char[]>(size * longestDatagram);
    std::array<mmsghdr, size> m_messages{};
    std::array<iovec, size> m_vectors{};
    std::array<sockaddr_in6, size> m_senders{};
};

/// Counts datagrams that found no room and logs them, at most once a second.
class Refusals {
public:
    Refusals(SystemLog& log, std::string label)
        : m_log(log)
        , m_label(std::move(label))
    {
    }
    ~Refusals() { log(); }
    Refusals(const Refusals&) = delete;
    Refusals& operator=(const Refusals&) = delete;

    void note(std::string_view data) { ++(data.starts_with("MOVE") ? m_moves : m_others); }

    void logIfDue(SteadyClock::time_point now)
    {
        if (now < m_nextLine)
            return;
        log();
        m_nextLine = now + refusalLineInterval;
    }

private:
    void log()
    {
        if (m_moves + m_others == 0)
            return;
        m_log.log(m_label + ": the main thread is behind, dropped " + std::to_string(m_moves) + " moves and "
            + std::to_string(m_others) + " other datagrams");
        m_moves = m_others = 0;
    }

    SystemLog& m_log;
    const std::string m_label;
    std::uint64_t m_moves = 0;
    std::uint64_t m_others = 0;
    SteadyClock::time_point m_nextLine;
};

void sleepUnlessStopped(std::chrono::milliseconds duration, const std::stop_token& stop)
{
    std::mutex mutex;
    std::unique_lock lock(mutex);
    std::condition_variable_any().wait_for(lock, stop, duration, [] { return false; });
}

} // namespace

PosixAsyncUdpSocket::PosixAsyncUdpSocket(AsyncUdpSocketDelegate& delegate, std::string queueLabel,
    MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice)
    : m_delegate(delegate)
    , m_queueLabel(std::move(queueLabel))
    , m_mainQueue(mainQueue)
    , m_log(log)
    , m_afterSlice(std::move(afterSlice))
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
    if (auto error = startReceiving())
        return error;
    m_delivery->deliverAll();
    return std::nullopt;
}

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::receiveOnce()
{
    if (auto error = startReceiving())
        return error;
    m_delivery->deliverOne();
    return std::nullopt;
}

void PosixAsyncUdpSocket::close()
{
    if (std::exchange(m_isClosed, true))
        return;
    if (m_thread.joinable())
        stopReceiving();
    if (m_socket >= 0)
        ::close(std::exchange(m_socket, -1));
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
    return bytes / 2; // Linux doubles what it is asked for, for its own bookkeeping: socket(7)
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
        requestReceiveBuffer();
}

void PosixAsyncUdpSocket::requestReceiveBuffer()
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

std::optional<AsyncUdpSocket::Error> PosixAsyncUdpSocket::startReceiving()
{
    if (auto error = unusable())
        return error;
    if (!m_isBound)
        return "The socket is not bound to a port";
    if (m_thread.joinable())
        return std::nullopt;
    m_delivery = std::make_shared<DatagramDelivery>(*this, m_delegate, m_mainQueue, m_afterSlice);
    try {
        const BlockedSignals blockedSignals;
        m_thread = std::jthread([this](const std::stop_token& stop) { receive(stop); });
    } catch (const std::system_error& noThread) {
        return noThread.what();
    }
    return std::nullopt;
}

void PosixAsyncUdpSocket::stopReceiving()
{
    m_delivery->close();
    m_thread.request_stop();
    // Ends the read that the thread waits in. For a socket without a peer Linux does so, too, and reports an error.
    shutdown(m_socket, SHUT_RD);
    m_thread.join();
    m_delivery.reset();
}

/// The receive thread.
void PosixAsyncUdpSocket::receive(const std::stop_token& stop)
{
    pthread_setname_np(pthread_self(), m_queueLabel.substr(0, 15).c_str());
    Batch batch;
    Refusals refusals(m_log, m_queueLabel);
    for (;;) {
        const int count = batch.receive(m_socket);
        if (stop.stop_requested())
            return;
        if (count < 0) {
            if (isTransient(errno))
                continue;
            m_log.log(m_queueLabel + ": cannot receive: " + errorText(errno));
            sleepUnlessStopped(pauseAfterError, stop);
            continue;
        }
        const auto now = SteadyClock::now();
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            if (!m_delivery->offer(batch.source(i), batch.data(i), now))
                refusals.note(batch.data(i));
        }
        m_delivery->wake();
        refusals.logIfDue(now);
    }
}

PosixAsyncUdpSocketFactory::PosixAsyncUdpSocketFactory(
    MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice)
    : m_mainQueue(mainQueue)
    , m_log(log)
    , m_afterSlice(std::move(afterSlice))
{
}

std::unique_ptr<AsyncUdpSocket> PosixAsyncUdpSocketFactory::makeSocket(
    AsyncUdpSocketDelegate& delegate, const std::string& queueLabel)
{
    return std::make_unique<PosixAsyncUdpSocket>(delegate, queueLabel, m_mainQueue, m_log, m_afterSlice);
}

} // namespace companion
