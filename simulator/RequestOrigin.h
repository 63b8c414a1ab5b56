#pragma once

#include <optional>
#include <string>

namespace companion::simulator {

/// Whether a browser may be sending this for a page of somebody else's: one line that says so, or nothing.
///
/// `host` and `origin` are the header fields. An `origin` (RFC 6454) that is not this panel's page is refused; requests
/// without one, as scripts send them, are not. A `host` that names the panel by a name that anybody on the Internet can
/// own is refused too: such a name can be made to point here (DNS rebinding), and then looks like the panel's own.
std::optional<std::string> foreignOrigin(
    const std::optional<std::string>& host, const std::optional<std::string>& origin);

} // namespace companion::simulator
