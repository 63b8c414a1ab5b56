#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// Where a datagram came from; an IPv4 address is kept as its IPv4-mapped IPv6 one (RFC 4291, 2.5.5.2).
struct DatagramSource {
    in6_addr address = in6addr_any;
    std::uint16_t port = 0; ///< Host byte order.
};

struct Datagram {
    DatagramSource source;
    std::string_view data; ///< Valid until the datagram is removed.
};

/// Datagrams on their way from whoever puts them in, one thread at a time, to the thread that takes them out, without a
/// lock between the two and without an allocation for each. Bounded in number and in bytes.
///
/// Nearly full, it refuses what can be spared, so that the rest still finds room: a flood of movements or of rubbish
/// must not push out the release of a button.
class DatagramQueue {
public:
    struct Limits {
        std::size_t records = 65'536;
        std::size_t bytes = 4 << 20; ///< A power of two; each record takes 20 bytes beside its own.
    };

    /// Datagrams that begin with none of `keptPrefixes` can be spared.
    explicit DatagramQueue(std::vector<std::string> keptPrefixes)
        : DatagramQueue(std::move(keptPrefixes), Limits())
    {
    }
    DatagramQueue(std::vector<std::string> keptPrefixes, Limits limits);

    /// Copies the datagram to the end, or refuses it: a spare one past seven eighths, any one when full.
    bool push(const DatagramSource& source, std::string_view data);

    bool isEmpty() const;

    /// The oldest datagram; the queue may not be empty.
    Datagram front();

    /// Removes the oldest datagram.
    void pop();

private:
    struct Head;

    bool hasRoom(std::uint64_t position, std::size_t bytes, std::string_view data) const;
    bool isSpare(std::string_view data) const;
    std::uint64_t startFor(std::size_t bytes);
    std::uint64_t skipGap(std::uint64_t position) const;
    char* at(std::uint64_t position) const { return m_bytes.get() + (position & (m_limits.bytes - 1)); }

    const std::vector<std::string> m_keptPrefixes;
    const Limits m_limits;
    const std::unique_ptr<char[]> m_bytes;

    // Positions and counts only grow, so that full and empty differ. Each side's own are a cache line apart.
    alignas(64) std::atomic<std::uint64_t> m_written = 0;
    std::uint64_t m_pushed = 0;
    alignas(64) std::atomic<std::uint64_t> m_read = 0;
    std::atomic<std::uint64_t> m_popped = 0;
};

} // namespace companion
