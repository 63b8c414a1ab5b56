#include "platform/posix/DatagramQueue.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace companion {

namespace {

// No datagram is as long: the IP header's 16-bit length covers the UDP header too.
constexpr std::uint16_t gapMark = 0xFFFF;

constexpr std::size_t alignment = 4;

constexpr std::size_t aligned(std::size_t bytes)
{
    return (bytes + alignment - 1) & ~(alignment - 1);
}

} // namespace

/// What lies in front of each record's bytes. A gap at the end of the memory, too small for the record that
/// came next, begins with a size of `gapMark` and has nothing else of it.
struct DatagramQueue::Head {
    std::uint16_t size;
    std::uint16_t port;
    in6_addr address;
};

DatagramQueue::DatagramQueue(std::vector<std::string> keptPrefixes, Limits limits)
    : m_keptPrefixes(std::move(keptPrefixes))
    , m_limits(limits)
    , m_bytes(std::make_unique_for_overwrite<char[]>(limits.bytes))
{
}

bool DatagramQueue::push(const DatagramSource& source, std::string_view data)
{
    if (data.size() >= gapMark)
        return false;
    const std::size_t bytes = aligned(sizeof(Head) + data.size());
    const std::uint64_t start = startFor(bytes);
    if (!hasRoom(start, bytes, data))
        return false;

    const std::uint64_t gapStart = m_written.load(std::memory_order_relaxed);
    if (start != gapStart)
        std::memcpy(at(gapStart), &gapMark, sizeof gapMark);

    const Head head{static_cast<std::uint16_t>(data.size()), source.port, source.address};
    std::memcpy(at(start), &head, sizeof head);
    if (!data.empty())
        std::memcpy(at(start) + sizeof head, data.data(), data.size());
    ++m_pushed;
    m_written.store(start + bytes, std::memory_order_release);
    return true;
}

bool DatagramQueue::isEmpty() const
{
    return m_read.load(std::memory_order_acquire) == m_written.load(std::memory_order_acquire);
}

Datagram DatagramQueue::front()
{
    const char* record = at(skipGap(m_read.load(std::memory_order_relaxed)));
    Head head;
    std::memcpy(&head, record, sizeof head);
    return {{head.address, head.port}, {record + sizeof head, head.size}};
}

void DatagramQueue::pop()
{
    const std::uint64_t start = skipGap(m_read.load(std::memory_order_relaxed));
    std::uint16_t size = 0;
    std::memcpy(&size, at(start), sizeof size);
    m_popped.store(m_popped.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    m_read.store(start + aligned(sizeof(Head) + size), std::memory_order_release);
}

/// Where a record of so many bytes would begin: records are not cut in two at the end of the memory.
std::uint64_t DatagramQueue::startFor(std::size_t bytes)
{
    const std::uint64_t written = m_written.load(std::memory_order_relaxed);
    const std::uint64_t toEnd = m_limits.bytes - (written & (m_limits.bytes - 1));
    return bytes <= toEnd ? written : written + toEnd;
}

bool DatagramQueue::hasRoom(std::uint64_t position, std::size_t bytes, std::string_view data) const
{
    const std::uint64_t usedBytes = position + bytes - m_read.load(std::memory_order_acquire);
    const std::uint64_t usedRecords = m_pushed + 1 - m_popped.load(std::memory_order_relaxed);
    // What the datagram is matters to a queue that is nearly full, and to no other.
    if (usedBytes <= m_limits.bytes / 8 * 7 && usedRecords <= m_limits.records / 8 * 7)
        return true;
    return usedBytes <= m_limits.bytes && usedRecords <= m_limits.records && !isSpare(data);
}

bool DatagramQueue::isSpare(std::string_view data) const
{
    return std::none_of(m_keptPrefixes.begin(), m_keptPrefixes.end(),
        [&](const std::string& prefix) { return data.starts_with(prefix); });
}

std::uint64_t DatagramQueue::skipGap(std::uint64_t position) const
{
    std::uint16_t size = 0;
    std::memcpy(&size, at(position), sizeof size);
    if (size != gapMark)
        return position;
    return position + m_limits.bytes - (position & (m_limits.bytes - 1));
}

} // namespace companion
