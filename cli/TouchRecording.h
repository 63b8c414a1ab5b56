#pragma once

#include <chrono>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace companion::cli {

constexpr std::uint64_t defaultMostRecordedBytes = 100 << 20;

/// Writes touches and when they arrived as text, in the format that docs/panel-protocol.md describes.
class TouchRecording {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// `target` must outlive it. `comment` is one line. No touch is written that would exceed `mostBytes`.
    TouchRecording(
        std::ostream& target, std::string_view comment, std::uint64_t mostBytes = defaultMostRecordedBytes);

    /// One datagram that arrived at `now`. The format's last moment is a day after the first one: what comes later is
    /// left out.
    void take(std::string_view datagram, TimePoint now);

    /// Whether a touch has been left out because of the size; all later ones are, too.
    bool isFull() const { return m_isFull; }

private:
    std::ostream& m_target;
    const std::uint64_t m_mostBytes;
    std::uint64_t m_bytes = 0;
    bool m_isFull = false;
    bool m_isEmpty = true;
    TimePoint m_first;
};

/// A datagram as a line of a recording tells it: ASCII without control characters.
std::string recordedText(std::string_view datagram);

} // namespace companion::cli
