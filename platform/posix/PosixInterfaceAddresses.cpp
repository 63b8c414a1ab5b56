#include "platform/posix/PosixInterfaceAddresses.h"

#include <array>
#include <ifaddrs.h>
#include <memory>
#include <netdb.h>
#include <netinet/in.h>

namespace companion {

namespace {

AddressFamily familyOf(const sockaddr& address)
{
    switch (address.sa_family) {
    case AF_INET:
        return AddressFamily::ipv4;
    case AF_INET6:
        return AddressFamily::ipv6;
    default:
        return AddressFamily::other;
    }
}

/// "" for what has no numeric form, such as a link's address.
std::string numericHost(const sockaddr& address)
{
    const socklen_t length = address.sa_family == AF_INET6 ? sizeof(sockaddr_in6) : sizeof(sockaddr_in);
    std::array<char, NI_MAXHOST> host{};
    getnameinfo(&address, length, host.data(), host.size(), nullptr, 0, NI_NUMERICHOST);
    return host.data();
}

NumericAddress numericAddress(const sockaddr& address)
{
    const AddressFamily family = familyOf(address);
    return {family, family == AddressFamily::other ? std::string() : numericHost(address)};
}

} // namespace

std::optional<std::vector<InterfaceAddress>> PosixInterfaceAddresses::list() const
{
    ifaddrs* first = nullptr;
    if (getifaddrs(&first) != 0)
        return std::nullopt;
    const std::unique_ptr<ifaddrs, decltype(&freeifaddrs)> owner(first, freeifaddrs);

    std::vector<InterfaceAddress> entries;
    for (const ifaddrs* entry = first; entry; entry = entry->ifa_next) {
        if (entry->ifa_addr)
            entries.push_back({entry->ifa_name, numericAddress(*entry->ifa_addr)});
    }
    return entries;
}

} // namespace companion
