#pragma once

#include <string>
#include <string_view>

namespace companion::simulator {

/// A file name out of what a stranger calls his file: the part after the last "/" or "\", without control
/// characters, visible (a leading "." gets a "_" before it), UTF-8, never empty, and at most 200 bytes with its
/// extension kept.
std::string safeFileName(std::string_view offered);

/// The name with a number before its extension: "a.png" and 2 give "a (2).png"; 1 changes nothing.
std::string numberedFileName(const std::string& name, unsigned number);

} // namespace companion::simulator
