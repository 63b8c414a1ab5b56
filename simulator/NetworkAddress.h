#pragma once

#include <string>

namespace companion::simulator {

/// This computer's address towards the default route, as dotted text; 127.0.0.1 when there is no such route.
std::string defaultAddress();

/// The index of the interface that has this address; -1 (to Avahi: all of them) when there is none.
int interfaceOf(const std::string& ipv4);

} // namespace companion::simulator
