#include "platform/posix/RoutedInterfaceName.h"

#include "platform/posix/PosixInterfaceAddresses.h"

#include <arpa/inet.h>
#include <array>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

std::string interfaceRoutedTo(const std::string& destination)
{
    const std::string source = sourceAddressTowards(destination);
    if (source.empty())
        return "";
    for (const InterfaceAddress& entry :
        PosixInterfaceAddresses().list().value_or(std::vector<InterfaceAddress>())) {
        if (entry.address && entry.address->text == source)
            return entry.interfaceName;
    }
    return "";
}

} // namespace

std::string sourceAddressTowards(const std::string& destination)
{
    // Connecting a UDP socket looks the route up and sends nothing, so any port will do.
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(9);
    if (inet_pton(AF_INET, destination.c_str(), &address.sin_addr) != 1)
        return "";
    const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    socklen_t length = sizeof address;
    const bool isRouted = connect(descriptor, reinterpret_cast<const sockaddr*>(&address), length) == 0
        && getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length) == 0;
    close(descriptor);
    std::array<char, INET_ADDRSTRLEN> text{};
    return isRouted ? inet_ntop(AF_INET, &address.sin_addr, text.data(), text.size()) : "";
}

RoutedInterfaceName::RoutedInterfaceName(std::optional<std::string> chosenName)
    : m_chosenName(std::move(chosenName))
{
}

std::string RoutedInterfaceName::interfaceNameTowards(const std::optional<std::string>& panelAddress) const
{
    if (m_chosenName)
        return *m_chosenName;
    const std::string name = interfaceRoutedTo(panelAddress.value_or(""));
    return name.empty() ? interfaceRoutedTo(internetAddress) : name;
}

} // namespace companion
