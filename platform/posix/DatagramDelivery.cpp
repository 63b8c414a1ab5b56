#include "platform/posix/DatagramDelivery.h"

#include <arpa/inet.h>
#include <chrono>
#include <cstring>
#include <utility>

namespace companion {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds sliceLength{5};

// All else can be spared: a finger that moves sends hundreds of moves, of which losing some costs nothing but
// smoothness, and what is no touch is worth nothing.
const std::vector<std::string> pressesAndReleases{"DOWN,", "UP,"};

std::string numericText(const in6_addr& address)
{
    char text[INET6_ADDRSTRLEN] = "";
    if (IN6_IS_ADDR_V4MAPPED(&address))
        inet_ntop(AF_INET, address.s6_addr + 12, text, sizeof text);
    else
        inet_ntop(AF_INET6, &address, text, sizeof text);
    return text;
}

} // namespace

DatagramDelivery::DatagramDelivery(AsyncUdpSocket& socket, AsyncUdpSocketDelegate& delegate,
    MainQueue& mainQueue, std::function<void()> afterSlice)
    : m_socket(socket)
    , m_delegate(delegate)
    , m_mainQueue(mainQueue)
    , m_afterSlice(std::move(afterSlice))
    , m_queue(pressesAndReleases)
    , m_sender{numericText(m_source.address), m_source.port}
{
}

void DatagramDelivery::wake()
{
    if (!m_isWakePending.exchange(true))
        m_mainQueue.async([this] { runSlice(); });
}

void DatagramDelivery::deliverNow()
{
    // Where a wake-up is pending, that one delivers.
    if (!m_isWakePending.exchange(true))
        runSlice();
}

void DatagramDelivery::deliverAll()
{
    m_deliversAll = true;
    wake();
}

void DatagramDelivery::deliverOne()
{
    if (m_deliversAll)
        return;
    ++m_wanted;
    wake();
}

void DatagramDelivery::runSlice()
{
    const auto sliceEnd = SteadyClock::now() + sliceLength;
    bool hasDelivered = false;
    bool isTimeOver = false;
    do {
        while (!isTimeOver && isWanted() && !m_queue.isEmpty()) {
            deliverFront();
            hasDelivered = true;
            // One datagram alone, the usual case, asks for the time only once.
            isTimeOver = !m_queue.isEmpty() && SteadyClock::now() >= sliceEnd;
        }
    } while (!isTimeOver && !mayRest());

    if (hasDelivered && m_afterSlice)
        m_afterSlice();
    if (isTimeOver && m_isOpen)
        m_mainQueue.async([this] { runSlice(); }); // still the one wake-up that is pending
}

void DatagramDelivery::deliverFront()
{
    const Datagram datagram = m_queue.front();
    if (!m_deliversAll)
        --m_wanted;
    noteSender(datagram.source);
    m_delegate.udpSocketDidReceiveData(m_socket, datagram.data, m_sender);
    m_queue.pop();
}

/// Ends the pending wake-up, unless something came since the last look that nobody else will deliver.
bool DatagramDelivery::mayRest()
{
    // Read and written in one step: what the receive thread put in before it found the wake-up still pending
    // must be seen by the look at the queue that follows.
    m_isWakePending.exchange(false);
    if (!isWanted() || m_queue.isEmpty())
        return true;
    return m_isWakePending.exchange(true);
}

/// Touches come from one panel for minutes on end: its address becomes text once.
void DatagramDelivery::noteSender(const DatagramSource& source)
{
    if (std::memcmp(&source.address, &m_source.address, sizeof source.address) != 0)
        m_sender.host = numericText(source.address);
    m_sender.port = source.port;
    m_sender.receivedAt = SteadyClock::now();
    m_source = source;
}

} // namespace companion
