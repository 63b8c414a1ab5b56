#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace companion::simulator {

/// One line that says why a request may come from a page of another site, or nothing.
///
/// `host` and `origin` are the header fields. An `origin` (RFC 6454) other than this panel's page is refused; requests
/// without one, such as those of scripts, are not. A `host` that anybody on the Internet could own is refused as well:
/// such a name can be made to resolve to the panel (DNS rebinding), and its pages then look like the panel's own.
std::optional<std::string> foreignOrigin(
    const std::optional<std::string>& host, const std::optional<std::string>& origin);

/// The media type of a PNG, JPEG, GIF, WebP or BMP picture, by its first `pictureTypeBytes` bytes. "" for everything
/// else, whatever its name; also for SVG, which may hold scripts.
std::string_view pictureType(std::string_view firstBytes);

constexpr std::size_t pictureTypeBytes = 16;

} // namespace companion::simulator
