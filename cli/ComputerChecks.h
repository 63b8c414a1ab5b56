#pragma once

#include "cli/Check.h"
#include "cli/UdpPortHolder.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

/// Whether touches can be listened for: `error` is the system's words when they cannot.
Check touchPortCheck(const std::optional<std::string>& error, const std::vector<PortHolder>& holders);

/// What waiting for touches came to; `after` is when the first one came, from `sender`.
Check touchesCheck(const std::optional<std::chrono::milliseconds>& after, const std::string& sender,
    std::chrono::milliseconds waited);

/// In place of it when the port is not ours; `error` is the socket's.
Check noTouchesCheck(const std::string& error);

/// What there is to show windows on and to post input events to.
struct DisplayFacts {
    enum class X { none, noLibrary, cannotOpen, silent, noXTest, usable };

    X x = X::none;
    std::string display;        ///< $DISPLAY
    std::string waylandDisplay; ///< $WAYLAND_DISPLAY
};

Check displayCheck(const DisplayFacts& facts);

Check versionCheck(const std::string& version, const std::string& system);

} // namespace companion::cli
