#include "panel/LocalAddress.h"

#include "platform/FatalError.h"

namespace companion {

std::string getLocalIPAddress(const InterfaceAddresses& addresses, const std::string& interfaceName)
{
    const std::optional<std::vector<InterfaceAddress>> entries = addresses.list();
    if (!entries)
        return "";

    std::string localAddress;
    for (const InterfaceAddress& entry : *entries) {
        if (!entry.address)
            fatalError("An interface address entry has no address.");
        if (entry.address->family == AddressFamily::ipv4 && entry.interfaceName == interfaceName)
            localAddress = entry.address->text;
    }
    return localAddress;
}

} // namespace companion
