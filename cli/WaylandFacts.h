#pragma once

#include <chrono>
#include <string>

namespace companion::cli {

/// Whether the compositor at this display ($WAYLAND_DISPLAY) offers a virtual pointer. Waits about as long as `time` when
/// it keeps silent.
bool hasVirtualPointer(const std::string& waylandDisplay, std::chrono::milliseconds time);

/// Whether the session bus has the RemoteDesktop portal, which is started for that. May block for as long as the bus likes.
bool hasRemoteDesktopPortal();

} // namespace companion::cli
