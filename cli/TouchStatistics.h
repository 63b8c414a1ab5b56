#pragma once

#include "cli/Json.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace companion::cli {

/// Counts touches, how fast they come, and where they stop coming in the middle of a movement.
class TouchStatistics {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Between two touches of one press: a person sees so long a pause.
    static constexpr std::chrono::milliseconds gapWorthTelling{100};

    /// One datagram that arrived at `now`.
    void take(std::string_view datagram, TimePoint now);

    std::uint64_t count() const { return m_count; }

    /// "412 touches in 3.4 s (121 a second), longest gap in a press 85 ms": what is wrong follows, if anything.
    std::string text() const;
    Json json() const;

private:
    double seconds() const;
    double rate() const;
    void takeEvent(std::string_view event, TimePoint now);
    void takeTimeStamp(std::string_view stamp);

    std::uint64_t m_count = 0;
    std::uint64_t m_malformed = 0;
    std::uint64_t m_longGaps = 0;
    std::uint64_t m_outOfOrder = 0;
    std::chrono::nanoseconds m_longestGap{};
    TimePoint m_first;
    TimePoint m_last;
    std::optional<TimePoint> m_lastOfPress; ///< While the finger is down.
    std::optional<double> m_lastStamp;
};

} // namespace companion::cli
