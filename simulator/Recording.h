#pragma once

#include "simulator/Gesture.h"

#include <string>
#include <string_view>
#include <variant>

namespace companion::simulator {

/// Reads a recording of touches: "panel-touches 1", then one line for each datagram with its time in milliseconds and
/// its bytes; docs/panel-protocol.md has the details. Datagrams are sent unchanged, time stamps included.
///
/// Returns a gesture that begins with the first datagram, or one line that says which line is wrong and why.
std::variant<Gesture, std::string> parseRecording(std::string_view text);

/// The most that is read from a file, in bytes: some hours of touches without a pause.
constexpr std::size_t maxRecordingFile = 64 * 1024 * 1024;

/// The same for a file; the one line begins with its name.
std::variant<Gesture, std::string> readRecording(const std::string& file);

} // namespace companion::simulator
