#pragma once

#include <string>

namespace companion::simulator {

/// The address of the default route's interface, as dotted text; 127.0.0.1 without such a route.
std::string defaultAddress();

/// The index of the interface that has this address; -1, which to Avahi means all interfaces, if none has.
int interfaceOf(const std::string& ipv4);

} // namespace companion::simulator
