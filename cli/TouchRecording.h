#pragma once

#include <chrono>
#include <ostream>
#include <string>
#include <string_view>

namespace companion::cli {

/// Writes touches and when they arrived as text, in the format that docs/panel-protocol.md describes.
class TouchRecording {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `target` must outlive it. `comment` is one line.
    TouchRecording(std::ostream& target, std::string_view comment);

    /// One datagram that arrived at `now`. The format's last moment is a day after the first one: what comes later is
    /// left out.
    void take(std::string_view datagram, TimePoint now);

private:
    std::ostream& m_target;
    bool m_isEmpty = true;
    TimePoint m_first;
};

/// A datagram as a line of a recording tells it: ASCII without control characters.
std::string recordedText(std::string_view datagram);

} // namespace companion::cli
