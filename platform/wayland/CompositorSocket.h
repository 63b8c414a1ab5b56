#pragma once

#include <string>

namespace companion {

/// Where the session's compositor listens ($WAYLAND_DISPLAY).
std::string sessionSocketPath();

/// A connection that does not wait, or -1 when no compositor listens there or its queue of new connections is full. The
/// Wayland library's own way of connecting would wait in such a queue.
int connectToCompositor(const std::string& socketPath);

} // namespace companion
