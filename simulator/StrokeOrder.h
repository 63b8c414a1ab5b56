#pragma once

#include "simulator/Gesture.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace companion::simulator {

/// Orders the numbered parts of a stroke, which arrive in requests that may overtake each other: each is played once and
/// in turn. Rejects other strokes while a finger is down.
class StrokeOrder {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// After this time without a part, another stroke may begin.
    static constexpr std::chrono::seconds restingTime{5};

    enum class Verdict {
        Play,    ///< this part is next
        Played,  ///< played before, or skipped
        Early,   ///< earlier parts are missing
        Busy,    ///< another finger is on the panel
        Unknown, ///< the stroke is over
    };

    /// The first part of a stroke is number 0.
    Verdict judge(const std::string& stroke, std::uint64_t part, Time now) const;

    /// It has begun and not ended.
    bool isUnderWay(const std::string& stroke) const { return m_isDown && stroke == m_stroke; }

    /// For the first part of a stroke: releases the finger of a stroke that never ended; nothing if there is none.
    std::optional<GestureStep> liftBefore(std::uint64_t part) const;

    /// Call it when the part is being played; missing parts before it are skipped.
    void played(const std::string& stroke, std::uint64_t part, const Gesture& gesture, Time now);

    /// Ends the stroke, since its touches cannot be sent.
    void abandon() { m_isDown = false; }

private:
    std::string m_stroke;
    std::uint64_t m_next = 0;
    std::string m_place; ///< "x,y," of the last touch
    bool m_isDown = false;
    Time m_lastHeard{};
};

} // namespace companion::simulator
