#include "platform/posix/UdpReceiver.h"

#include "platform/posix/BlockedSignals.h"

#include <cerrno>
#include <cstring>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr auto refusalLineInterval = 1s;
constexpr auto pauseAfterError = 1s;

DatagramSource sourceOf(const sockaddr_storage& sender)
{
    DatagramSource source;
    if (sender.ss_family == AF_INET6) {
        sockaddr_in6 address;
        std::memcpy(&address, &sender, sizeof address);
        source = {address.sin6_addr, ntohs(address.sin6_port)};
    } else {
        sockaddr_in address;
        std::memcpy(&address, &sender, sizeof address);
        source.port = ntohs(address.sin_port);
        source.address.s6_addr[10] = 0xFF;
        source.address.s6_addr[11] = 0xFF;
        std::memcpy(source.address.s6_addr + 12, &address.sin_addr, 4);
    }
    return source;
}

/// What the network reports about single datagrams (ICMP), or a signal; the next call is as good as any.
bool isPassing(int error)
{
    switch (error) {
    case EINTR:
    case EAGAIN:
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

} // namespace

UdpReceiver::UdpReceiver(int socket, DatagramDelivery& delivery, SystemLog& log, std::string label)
    : m_socket(socket)
    , m_delivery(delivery)
    , m_log(log)
    , m_label(std::move(label))
    , m_slots(std::make_unique_for_overwrite<char[]>(batchSize * slotBytes))
{
    prepareSlots();
    const BlockedSignals blockedSignals;
    m_thread = std::thread([this] { run(); });
}

UdpReceiver::~UdpReceiver()
{
    {
        const std::lock_guard lock(m_pauseMutex);
        m_isStopping = true;
    }
    m_pauseEnd.notify_all();
    // Linux wakes a blocked reader of a datagram socket that is shut down, although it reports ENOTCONN: this
    // saves the receive thread a poll before every read.
    shutdown(m_socket, SHUT_RD);
    m_thread.join();
    tellRefusals();
}

void UdpReceiver::prepareSlots()
{
    for (std::size_t i = 0; i < batchSize; ++i) {
        m_vectors[i] = {m_slots.get() + i * slotBytes, slotBytes};
        msghdr& header = m_messages[i].msg_hdr;
        header.msg_iov = &m_vectors[i];
        header.msg_iovlen = 1;
        header.msg_name = &m_senders[i];
        header.msg_namelen = sizeof m_senders[i];
    }
}

void UdpReceiver::run()
{
    pthread_setname_np(pthread_self(), m_label.substr(0, 15).c_str());
    while (!m_isStopping) {
        const int count = recvmmsg(m_socket, m_messages.data(), batchSize, MSG_WAITFORONE, nullptr);
        const int error = errno;
        if (m_isStopping)
            return;
        if (count < 0)
            handleError(error);
        else
            takeBatch(static_cast<std::size_t>(count));
    }
}

void UdpReceiver::takeBatch(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        takeDatagram(m_messages[i].msg_hdr, m_messages[i].msg_len);
        m_messages[i].msg_hdr.msg_namelen = sizeof m_senders[i];
    }
    m_delivery.wake();
    if (m_refusedSpare + m_refusedOthers > 0 && std::chrono::steady_clock::now() >= m_nextRefusalLine)
        tellRefusals();
}

void UdpReceiver::takeDatagram(const msghdr& header, std::size_t size)
{
    sockaddr_storage sender;
    std::memcpy(&sender, header.msg_name, sizeof sender);
    const std::string_view data(static_cast<const char*>(header.msg_iov->iov_base), size);
    if (!m_delivery.offer(sourceOf(sender), data))
        noteRefusal(m_delivery.isSpare(data));
}

void UdpReceiver::noteRefusal(bool wasSpare)
{
    ++(wasSpare ? m_refusedSpare : m_refusedOthers);
}

void UdpReceiver::tellRefusals()
{
    if (m_refusedSpare + m_refusedOthers == 0)
        return;
    m_log.log(m_label + ": the main thread is behind, dropped " + std::to_string(m_refusedSpare)
        + " moves and " + std::to_string(m_refusedOthers) + " other datagrams");
    m_refusedSpare = 0;
    m_refusedOthers = 0;
    m_nextRefusalLine = std::chrono::steady_clock::now() + refusalLineInterval;
}

void UdpReceiver::handleError(int error)
{
    if (isPassing(error))
        return;
    m_log.log(m_label + ": cannot receive: " + std::generic_category().message(error));
    pauseFor(pauseAfterError);
}

/// Sleeps, unless the thread is to end.
void UdpReceiver::pauseFor(std::chrono::milliseconds duration)
{
    std::unique_lock lock(m_pauseMutex);
    m_pauseEnd.wait_for(lock, duration, [this] { return m_isStopping.load(); });
}

} // namespace companion
