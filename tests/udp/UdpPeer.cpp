#include "tests/udp/UdpPeer.h"

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

namespace {

struct Address {
    sockaddr_storage storage{};
    socklen_t size = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&storage); }
};

Address loopback(UdpPeer::Family family, std::uint16_t port)
{
    Address result;
    if (family == UdpPeer::Family::ipv4) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(port);
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        std::memcpy(&result.storage, &address, result.size = sizeof address);
    } else {
        sockaddr_in6 address{};
        address.sin6_family = AF_INET6;
        address.sin6_port = htons(port);
        address.sin6_addr = in6addr_loopback;
        std::memcpy(&result.storage, &address, result.size = sizeof address);
    }
    return result;
}

} // namespace

UdpPeer::UdpPeer(Family family)
    : m_family(family)
    , m_socket(socket(family == Family::ipv4 ? AF_INET : AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    if (m_socket < 0)
        throw std::runtime_error("no socket of this address family");
}

UdpPeer::~UdpPeer()
{
    close(m_socket);
}

bool UdpPeer::bindTo(std::uint16_t port)
{
    const Address address = loopback(m_family, port);
    return bind(m_socket, address.get(), address.size) == 0;
}

std::uint16_t UdpPeer::port() const
{
    sockaddr_in6 address{}; // the port has the same place in an IPv4 address
    socklen_t size = sizeof address;
    getsockname(m_socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin6_port);
}

void UdpPeer::send(std::string_view data, std::uint16_t port)
{
    const Address address = loopback(m_family, port);
    const ssize_t sent = sendto(m_socket, data.data(), data.size(), 0, address.get(), address.size);
    if (sent != static_cast<ssize_t>(data.size()))
        throw std::runtime_error(std::string("cannot send: ") + std::strerror(errno));
}

} // namespace companion::testing
