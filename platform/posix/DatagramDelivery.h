#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/MainQueue.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <string_view>

namespace companion {

/// Where a datagram came from; an IPv4 address is kept as its IPv4-mapped IPv6 one (RFC 4291, 2.5.5.2).
struct DatagramSource {
    in6_addr address = in6addr_any;
    std::uint16_t port = 0; ///< Host byte order.
};

/// Buffers datagrams from the receive thread and delivers them on the main queue, in arrival order.
///
/// The buffer is bounded. Past seven eighths of either limit it accepts presses and releases only, so that a flood of
/// movements or of rubbish cannot push out the release of a button.
///
/// At most one job is pending on the main queue. It delivers for at most 5 ms and then queues itself again, so that the
/// window stays responsive in a flood.
class DatagramDelivery : public std::enable_shared_from_this<DatagramDelivery> {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    static constexpr std::size_t maxRecords = 65'536;
    static constexpr std::size_t maxBytes = 4 << 20; ///< Each record takes 32 bytes on top of its data.

    /// All must outlive the delivery until it is closed. `afterSlice`, which may be empty, is called after each job
    /// that delivered anything.
    DatagramDelivery(AsyncUdpSocket& socket, AsyncUdpSocketDelegate& delegate, MainQueue& mainQueue,
        std::function<void()> afterSlice);

    /// Buffers a copy; false if there is no room for it. Any thread.
    bool offer(const DatagramSource& source, std::string_view data, TimePoint receivedAt);

    /// Schedules the delivery of what has been buffered. Any thread.
    void wake();

    // Main thread only:

    void deliverAll();
    void deliverOne();

    /// Nothing is delivered any more, not even by the job that is running.
    void close() { m_isOpen = false; }

private:
    struct Record;

    bool hasRoom(std::string_view data) const;
    void write(const void* bytes, std::size_t size);
    void read(void* bytes, std::size_t size);

    void deliverSlice();
    bool takeNext();
    void noteSender(const Record& record);

    AsyncUdpSocket& m_socket;
    AsyncUdpSocketDelegate& m_delegate;
    MainQueue& m_mainQueue;
    const std::function<void()> m_afterSlice;

    // A ring of records, each followed by its data. Positions only grow; both start again from 0 when it is empty.
    struct Buffer {
        std::mutex mutex;
        const std::unique_ptr<char[]> bytes = std::make_unique_for_overwrite<char[]>(maxBytes);
        std::uint64_t written = 0;
        std::uint64_t read = 0;
        std::size_t records = 0;
        bool isWakePending = false;
    };
    Buffer m_buffer;

    // Main thread only.
    bool m_isOpen = true;
    bool m_deliversAll = false;
    std::uint64_t m_wanted = 0;
    std::string m_data; ///< Of the datagram that is being delivered.
    DatagramSource m_source;
    UdpSender m_sender; ///< `m_source` as text.
};

} // namespace companion
