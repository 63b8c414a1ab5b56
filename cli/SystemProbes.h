#pragma once

#include "cli/Checks.h"
#include "cli/Probes.h"

#include <filesystem>

namespace companion::cli {

// The `Probes` of a real system.

/// Asks the system bus for the Avahi daemon.
MdnsDaemonFacts lookAtMdnsDaemon(std::chrono::milliseconds time);

/// Reads the tables and the open files of processes under /proc: see proc(5). Only root sees those of other users.
std::vector<PortHolder> udpPortHolders(std::uint16_t port, const std::filesystem::path& root = "/proc");

/// Connects, and closes the connections at once.
std::vector<PortAnswer> connectToPorts(const std::vector<std::string>& addresses,
    const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time);

/// Connects to the session's Wayland compositor, portal and X server.
///
/// Their libraries may block forever. A thread that does is left behind, and `hasLeftThread` set: the process must then exit
/// without destroying anything that such a thread may still use.
DisplayFacts lookAtDisplays(std::chrono::milliseconds time, bool& hasLeftThread);

// What else commands want to know.

/// Why a file cannot be read, in the system's words. Opens it once more, since the reader only says that it failed.
std::string whyNotReadable(const std::string& path);

FirewallProfiles firewallProfiles();

/// "2026-11-22 16:00:00 UTC"
std::string currentTimeText();

} // namespace companion::cli
