#pragma once

#include <string>

#include <netinet/in.h>

namespace companion {

/// The name of the interface that packets to `destination` leave by; "" when there is no route. Any thread.
std::string interfaceOfRouteTo(in_addr destination);

/// The name of the interface of the IPv4 default route, of several the one with the lowest metric; "" when there is
/// none. Any thread.
std::string interfaceOfDefaultRoute();

} // namespace companion
