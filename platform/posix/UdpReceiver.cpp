#include "platform/posix/UdpReceiver.h"

#include "platform/posix/BlockedSignals.h"

#include <cerrno>
#include <cstring>
#include <poll.h>
#include <pthread.h>
#include <system_error>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr auto refusalLineInterval = 1s;
constexpr auto pauseAfterError = 1s;
constexpr auto forever = -1ms; // poll(2)

/// How often the receive thread looks in while touches come, and the least time that it reads. Without a larger buffer
/// the kernel holds 256 touches: as many as come in this time at 12,800 a second.
constexpr auto guardInterval = 20ms;

/// A main thread that finds more than so many batches waiting is behind.
constexpr std::size_t mostBatchesAtOnce = 8;

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

UdpReceiver::UdpReceiver(int socket, std::shared_ptr<DatagramDelivery> delivery, MainQueue& mainQueue,
    SystemLog& log, std::string label)
    : m_socket(socket)
    , m_delivery(std::move(delivery))
    , m_mainQueue(mainQueue)
    , m_log(log)
    , m_label(std::move(label))
    , m_slots(std::make_unique_for_overwrite<char[]>(batchSize * slotBytes))
{
    prepareSlots();
    {
        const BlockedSignals blockedSignals;
        m_thread = std::thread([this] { run(); });
    }
    watch();
}

UdpReceiver::~UdpReceiver()
{
    m_watch.reset();
    m_isStopping = true;
    m_wakeUp.ring();
    m_thread.join();
    tellRefusals();
}

void UdpReceiver::watch()
{
    m_watch = m_mainQueue.whenReadable(m_socket, [this] { readOnMainThread(); });
}

void UdpReceiver::readOnMainThread()
{
    {
        const std::lock_guard lock(m_mutex);
        ++m_mainThreadsReads;
        if (m_reader == Reader::mainThread && readBatches(mostBatchesAtOnce) != Outcome::emptied) {
            m_reader = Reader::receiveThread;
            m_wakeUp.ring();
        }
        if (m_reader == Reader::receiveThread)
            m_watch.reset();
    }
    const auto delivery = m_delivery; // the delegate may destroy this
    delivery->deliverNow();
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
        if (isReader(Reader::mainThread))
            standGuard();
        else
            readWhileMainThreadIsBehind();
    }
}

/// Until nothing comes any more, or the receive thread is to read.
void UdpReceiver::standGuard()
{
    waitForDatagram(forever);
    while (!m_isStopping && isReader(Reader::mainThread)) {
        const std::uint64_t reads = m_mainThreadsReads;
        pauseFor(guardInterval);
        if (m_mainThreadsReads != reads)
            continue;
        if (!waitForDatagram(0ms))
            return;
        takeOver();
    }
}

void UdpReceiver::readWhileMainThreadIsBehind()
{
    const auto start = std::chrono::steady_clock::now();
    while (!m_isStopping) {
        if (!waitForDatagram(forever))
            continue;
        if (m_delivery->isEmpty() && std::chrono::steady_clock::now() - start >= guardInterval) {
            handBack();
            return;
        }
        std::unique_lock lock(m_mutex);
        const Outcome outcome = readBatches(mostBatchesAtOnce);
        const int error = m_error;
        lock.unlock();
        m_delivery->wake();
        if (outcome == Outcome::failed) {
            m_log.log(m_label + ": cannot receive: " + std::generic_category().message(error));
            pauseFor(pauseAfterError);
        }
    }
}

bool UdpReceiver::isReader(Reader reader)
{
    const std::lock_guard lock(m_mutex);
    return m_reader == reader;
}

void UdpReceiver::takeOver()
{
    const std::lock_guard lock(m_mutex);
    m_reader = Reader::receiveThread;
}

void UdpReceiver::handBack()
{
    {
        const std::lock_guard lock(m_mutex);
        m_reader = Reader::mainThread;
    }
    m_mainQueue.async([self = std::weak_ptr(m_self)] {
        const auto receiver = self.lock();
        if (receiver && !(*receiver)->m_watch)
            (*receiver)->watch();
    });
}

/// Whether there is one, or an error to be read; not for long when the thread has been rung for.
bool UdpReceiver::waitForDatagram(std::chrono::milliseconds timeout)
{
    std::array<pollfd, 2> descriptors{{{m_socket, POLLIN, 0}, {m_wakeUp.descriptor(), POLLIN, 0}}};
    poll(descriptors.data(), descriptors.size(), static_cast<int>(timeout.count()));
    if (descriptors[1].revents != 0 && !m_isStopping)
        m_wakeUp.quiet();
    return descriptors[0].revents != 0;
}

/// Sleeps, unless the thread is rung for.
void UdpReceiver::pauseFor(std::chrono::milliseconds duration)
{
    pollfd descriptor{m_wakeUp.descriptor(), POLLIN, 0};
    poll(&descriptor, 1, static_cast<int>(duration.count()));
}

/// Brings in what there is, in so many batches at most. The mutex must be held.
UdpReceiver::Outcome UdpReceiver::readBatches(std::size_t most)
{
    for (std::size_t batch = 0; batch < most; ++batch) {
        const int count = recvmmsg(m_socket, m_messages.data(), batchSize, MSG_DONTWAIT, nullptr);
        if (count < 0) {
            m_error = errno;
            return isPassing(m_error) ? Outcome::emptied : Outcome::failed;
        }
        for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
            takeDatagram(m_messages[i].msg_hdr, m_messages[i].msg_len);
            m_messages[i].msg_hdr.msg_namelen = sizeof m_senders[i];
        }
        if (m_refusedMoves + m_refusedOthers > 0 && std::chrono::steady_clock::now() >= m_nextRefusalLine)
            tellRefusals();
        if (count < static_cast<int>(batchSize))
            return Outcome::emptied;
    }
    return Outcome::moreIsLeft;
}

void UdpReceiver::takeDatagram(const msghdr& header, std::size_t size)
{
    sockaddr_storage sender;
    std::memcpy(&sender, header.msg_name, sizeof sender);
    const std::string_view data(static_cast<const char*>(header.msg_iov->iov_base), size);
    if (!m_delivery->offer(sourceOf(sender), data))
        noteRefusal(DatagramDelivery::isMove(data));
}

void UdpReceiver::noteRefusal(bool wasMove)
{
    ++(wasMove ? m_refusedMoves : m_refusedOthers);
}

void UdpReceiver::tellRefusals()
{
    if (m_refusedMoves + m_refusedOthers == 0)
        return;
    m_log.log(m_label + ": the main thread is behind, dropped " + std::to_string(m_refusedMoves)
        + " moves and " + std::to_string(m_refusedOthers) + " other datagrams");
    m_refusedMoves = 0;
    m_refusedOthers = 0;
    m_nextRefusalLine = std::chrono::steady_clock::now() + refusalLineInterval;
}

} // namespace companion
