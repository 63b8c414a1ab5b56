#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace companion::testing {

/// A plain socket that sends datagrams to a port of this computer, and can hold a port of its own.
class UdpPeer {
public:
    enum class Family { ipv4, ipv6 };

    explicit UdpPeer(Family family = Family::ipv4);
    ~UdpPeer();
    UdpPeer(const UdpPeer&) = delete;
    UdpPeer& operator=(const UdpPeer&) = delete;

    /// Binds to the port on the loopback address, 0 for a free one; tells whether the system allowed it.
    bool bindTo(std::uint16_t port);
    std::uint16_t port() const;

    /// Throws when the system does not take the datagram.
    void send(std::string_view data, std::uint16_t port);

private:
    const Family m_family;
    int m_socket = -1;
};

} // namespace companion::testing
