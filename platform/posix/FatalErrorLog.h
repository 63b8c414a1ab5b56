#pragma once

#include <string_view>

namespace companion {

/// Sends a fatal error to the system's log, for `setFatalErrorHandler`. Any thread in any state: it allocates nothing, takes
/// no lock (syslog(3) has one, which another thread may hold), and does not wait for a log daemon that takes nothing. Texts
/// of more than 900 bytes are cut.
void logFatalError(std::string_view what, const char* logSocket = "/dev/log");

} // namespace companion
