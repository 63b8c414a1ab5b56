#include "platform/posix/DatagramDelivery.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <utility>

namespace companion {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds sliceLength{5};

/// A moving finger sends hundreds of moves, of which losing some costs nothing but smoothness.
bool isPressOrRelease(std::string_view data)
{
    return data.starts_with("DOWN,") || data.starts_with("UP,");
}

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

struct DatagramDelivery::Record {
    TimePoint receivedAt;
    DatagramSource source;
    std::uint16_t size = 0;
};

DatagramDelivery::DatagramDelivery(AsyncUdpSocket& socket, AsyncUdpSocketDelegate& delegate,
    MainQueue& mainQueue, std::function<void()> afterSlice)
    : m_socket(socket)
    , m_delegate(delegate)
    , m_mainQueue(mainQueue)
    , m_afterSlice(std::move(afterSlice))
    , m_sender{numericText(m_source.address)}
{
}

bool DatagramDelivery::offer(const DatagramSource& source, std::string_view data, TimePoint receivedAt)
{
    const Record record{receivedAt, source, static_cast<std::uint16_t>(data.size())};
    static_assert(sizeof record == 32);
    const std::lock_guard lock(m_buffer.mutex);
    if (!hasRoom(data))
        return false;
    write(&record, sizeof record);
    write(data.data(), data.size());
    ++m_buffer.records;
    return true;
}

void DatagramDelivery::wake()
{
    {
        const std::lock_guard lock(m_buffer.mutex);
        if (std::exchange(m_buffer.isWakePending, true))
            return;
    }
    m_mainQueue.async([self = shared_from_this()] { self->deliverSlice(); });
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

bool DatagramDelivery::hasRoom(std::string_view data) const
{
    const std::size_t bytes = m_buffer.written - m_buffer.read + sizeof(Record) + data.size();
    const std::size_t records = m_buffer.records + 1;
    if (bytes <= maxBytes / 8 * 7 && records <= maxRecords / 8 * 7)
        return true;
    return bytes <= maxBytes && records <= maxRecords && isPressOrRelease(data);
}

void DatagramDelivery::write(const void* bytes, std::size_t size)
{
    const std::size_t start = m_buffer.written % maxBytes;
    const std::size_t beforeEnd = std::min(size, maxBytes - start);
    std::copy_n(static_cast<const char*>(bytes), beforeEnd, &m_buffer.bytes[start]);
    std::copy_n(static_cast<const char*>(bytes) + beforeEnd, size - beforeEnd, &m_buffer.bytes[0]);
    m_buffer.written += size;
}

void DatagramDelivery::read(void* bytes, std::size_t size)
{
    const std::size_t start = m_buffer.read % maxBytes;
    const std::size_t beforeEnd = std::min(size, maxBytes - start);
    std::copy_n(&m_buffer.bytes[start], beforeEnd, static_cast<char*>(bytes));
    std::copy_n(&m_buffer.bytes[0], size - beforeEnd, static_cast<char*>(bytes) + beforeEnd);
    m_buffer.read += size;
}

void DatagramDelivery::deliverSlice()
{
    const auto end = SteadyClock::now() + sliceLength;
    bool hasDelivered = false;
    bool isTimeOver = false;
    while (!isTimeOver && takeNext()) {
        m_delegate.udpSocketDidReceiveData(m_socket, m_data, m_sender);
        hasDelivered = true;
        isTimeOver = SteadyClock::now() >= end;
    }
    if (hasDelivered && m_afterSlice)
        m_afterSlice();
    if (isTimeOver && m_isOpen)
        m_mainQueue.async(
            [self = shared_from_this()] { self->deliverSlice(); }); // still the only pending job
}

/// Moves the next datagram to `m_data` and `m_sender`; false, with no job pending any more, if there is none to deliver.
bool DatagramDelivery::takeNext()
{
    Record record;
    {
        const std::lock_guard lock(m_buffer.mutex);
        const bool isWanted = m_isOpen && (m_deliversAll || m_wanted > 0);
        m_buffer.isWakePending = isWanted && m_buffer.records > 0;
        if (!m_buffer.isWakePending)
            return false;
        read(&record, sizeof record);
        m_data.resize(record.size);
        read(m_data.data(), record.size);
        if (--m_buffer.records == 0)
            m_buffer.read = m_buffer.written = 0; // the same few pages again
    }
    if (!m_deliversAll)
        --m_wanted;
    noteSender(record);
    return true;
}

/// Touches come from one panel for minutes on end: its address is turned into text once.
void DatagramDelivery::noteSender(const Record& record)
{
    if (std::memcmp(&record.source.address, &m_source.address, sizeof m_source.address) != 0)
        m_sender.host = numericText(record.source.address);
    m_source = record.source;
    m_sender.port = record.source.port;
    m_sender.receivedAt = record.receivedAt;
}

} // namespace companion
