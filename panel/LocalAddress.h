#pragma once

#include "platform/InterfaceAddresses.h"

#include <string>

namespace companion {

/// getLocalIPAddress
/// The computer's own dotted IPv4 address on the interface of exactly this name, the one listed last when there
/// are several; "" when there is none or the system cannot tell. An entry without an address, whatever its
/// interface, is a fatal error. Any thread.
std::string getLocalIPAddress(const InterfaceAddresses& addresses, const std::string& interfaceName);

} // namespace companion
