#pragma once

#include "simulator/Gesture.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace companion::simulator {

/// The one finger on the panel, whose stroke comes in numbered parts, each in a request of its own. Puts the parts in
/// order however the requests overtake each other, plays none twice, and keeps other fingers away meanwhile.
class StrokeOrder {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// After so long without a part a finger counts as gone, and another one may come.
    static constexpr std::chrono::seconds restingTime{5};

    enum class Verdict {
        Play,    ///< it is this part's turn
        Played,  ///< it has been played, or passed over
        Early,   ///< parts before it are missing
        Busy,    ///< another finger is on the panel
        Unknown, ///< of a stroke that did not begin, or is over
    };

    /// The first part of a stroke is number 0.
    Verdict judge(const std::string& stroke, std::uint64_t part, Time now) const;

    /// It has begun, and its finger was not lifted.
    bool isUnderWay(const std::string& stroke) const { return m_isDown && stroke == m_stroke; }

    /// For the first part of a stroke: what lifts the finger that is gone without lifting; often nothing.
    std::optional<GestureStep> liftBefore(std::uint64_t part) const;

    /// The part is on its way; parts before it that are missing are passed over.
    void played(const std::string& stroke, std::uint64_t part, const Gesture& gesture, Time now);

    /// Nobody takes touches: the stroke is over.
    void abandon() { m_isDown = false; }

private:
    std::string m_stroke;
    std::uint64_t m_next = 0;
    std::string m_place; ///< "x,y," of the last touch
    bool m_isDown = false;
    Time m_lastHeard{};
};

} // namespace companion::simulator
