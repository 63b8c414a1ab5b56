#pragma once

#include "cli/Checks.h"

#include <string>

namespace companion::cli {

/// Why a file cannot be read, in the system's words. Opens it once more, since the reader only says that it failed.
std::string whyNotReadable(const std::string& path);

FirewallProfiles firewallProfiles();

/// "2026-11-22 16:00:00 UTC"
std::string currentTimeText();

} // namespace companion::cli
