#include "simulator/NetworkAddress.h"

#include <arpa/inet.h>
#include <ifaddrs.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::simulator {

namespace {

std::string textOf(const sockaddr_in& address)
{
    char text[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return text;
}

} // namespace

std::string defaultAddress()
{
    // Connecting a UDP socket sends nothing, but picks the route. The address is one reserved for documentation
    // (RFC 5737), which only the default route leads to.
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    inet_pton(AF_INET, "192.0.2.1", &address.sin_addr);
    socklen_t size = sizeof address;
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const bool isRouted = connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0
        && getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0;
    if (fd >= 0)
        close(fd);
    return isRouted ? textOf(address) : "127.0.0.1";
}

int interfaceOf(const std::string& ipv4)
{
    ifaddrs* list = nullptr;
    if (getifaddrs(&list) != 0)
        return -1;
    int index = -1;
    for (const ifaddrs* entry = list; entry && index < 0; entry = entry->ifa_next) {
        if (!entry->ifa_addr || entry->ifa_addr->sa_family != AF_INET)
            continue;
        // All of 127.0.0.0/8 is the loopback interface's, whatever it lists.
        const std::string listed = textOf(*reinterpret_cast<const sockaddr_in*>(entry->ifa_addr));
        const bool isLoopback = (entry->ifa_flags & IFF_LOOPBACK) != 0 && ipv4.starts_with("127.");
        if (listed == ipv4 || isLoopback)
            index = static_cast<int>(if_nametoindex(entry->ifa_name));
    }
    freeifaddrs(list);
    return index;
}

} // namespace companion::simulator
