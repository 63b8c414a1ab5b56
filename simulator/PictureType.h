#pragma once

#include <string_view>

namespace companion::simulator {

/// The media type of a picture that browsers show and that holds nothing but picture, by its first bytes: PNG, JPEG,
/// GIF, WebP, BMP. "" for everything else, whatever it is called; also for SVG, which may hold scripts.
std::string_view pictureType(std::string_view firstBytes);

/// So many first bytes tell.
constexpr std::size_t pictureTypeBytes = 16;

} // namespace companion::simulator
