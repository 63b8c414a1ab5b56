#include "simulator/NetworkAddress.h"

#include "platform/posix/PosixInterfaceAddresses.h"

#include <arpa/inet.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::simulator {

std::string defaultAddress()
{
    // Connecting a UDP socket sends nothing, but picks the route. The address is reserved for documentation (RFC 5737),
    // so only the default route leads to it.
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
    char text[INET_ADDRSTRLEN] = "127.0.0.1";
    if (isRouted)
        inet_ntop(AF_INET, &address.sin_addr, text, sizeof text);
    return text;
}

int interfaceOf(const std::string& ipv4)
{
    std::string name = ipv4.starts_with("127.") ? "lo" : ""; // which lists only one address of 127.0.0.0/8
    for (const auto& entry : PosixInterfaceAddresses().list().value_or(std::vector<InterfaceAddress>()))
        if (entry.address && entry.address->text == ipv4)
            name = entry.interfaceName;
    const unsigned index = if_nametoindex(name.c_str());
    return index > 0 ? static_cast<int>(index) : -1;
}

} // namespace companion::simulator
