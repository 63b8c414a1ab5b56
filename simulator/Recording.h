#pragma once

#include "simulator/Gesture.h"

#include <string>
#include <string_view>
#include <variant>

namespace companion::simulator {

/// Reads a recording of touches: "panel-touches 1", then a line for each datagram, its time in milliseconds and its
/// bytes; docs/panel-protocol.md has every detail. Each datagram goes out as it came, time stamp included.
///
/// The result is a gesture that begins with the first datagram, or one line that says which line is wrong and why.
std::variant<Gesture, std::string> parseRecording(std::string_view text);

/// The same for a file; the one line begins with its name.
std::variant<Gesture, std::string> readRecording(const std::string& file);

} // namespace companion::simulator
