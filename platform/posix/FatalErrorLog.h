#pragma once

#include <string_view>

namespace companion {

/// Tells the system's log of a fatal error: for `setLastWish`. Any thread, in whatever state it is: nothing is
/// allocated, no lock is taken (syslog(3) has one, which another thread may hold), and a log daemon that takes
/// nothing is not waited for. Longer texts than about 900 bytes are cut off.
void logFatalError(std::string_view what, const char* logSocket = "/dev/log");

} // namespace companion
