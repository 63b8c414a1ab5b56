#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace companion {

/// `line` as text that a terminal and a log show as one line: control characters but the tab, those of ISO 6429's
/// C1 set included, are spelled out ("\n", "\x1b"); what is longer than `longest` bytes ends in "...", at a
/// character's end.
std::string harmlessLine(std::string_view line, std::size_t longest);

} // namespace companion
