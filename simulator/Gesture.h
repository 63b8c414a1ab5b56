#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace companion::simulator {

/// What UDP over IPv4 carries in one datagram, in bytes.
constexpr std::size_t maxDatagram = 65'507;

/// A datagram to send, and the pause before it.
struct GestureStep {
    /// A touch is `bytes`, "WORD,x,y,", followed by the time of sending and ";"; anything else is sent unchanged.
    bool isTouch = false;
    std::string bytes;
    std::chrono::milliseconds pause{0};

    bool operator==(const GestureStep&) const = default;
};

using Gesture = std::vector<GestureStep>;

/// Reads the lines of a gesture; empty ones and those that begin with "#" are ignored.
///
///     DOWN x y [pause]    a touch, `pause` milliseconds after the line before
///     MOVE x y [pause]
///     UP x y [pause]
///     PAUSE ms            delays the next line
///     RAW text            a datagram of exactly this text, without a line end
///     HEX bytes           a datagram of these bytes, two digits each, blanks between them allowed
///
/// Returns a gesture, or one line that says which line is wrong and why.
std::variant<Gesture, std::string> parseGesture(std::string_view text);

} // namespace companion::simulator
