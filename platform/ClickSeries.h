#pragma once

#include "platform/Geometry.h"

#include <chrono>
#include <cstdint>

namespace companion {

/// When programs take two presses for a double click: usually a setting of the desktop.
struct ClickRules {
    std::chrono::milliseconds interval{400}; ///< From press to press; a gap of exactly this is too long.
    double distance = 5;                     ///< In points, across and down; exactly this is near enough.
};

/// What programs have counted: pointer events of X11 and Wayland carry no click count, so each program counts presses by
/// itself, by the time and the distance between one press and the next, and by the window. Pure arithmetic.
class ClickSeries {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    explicit ClickSeries(ClickRules rules)
        : m_rules(rules)
    {
    }

    /// Holds from now on, also between the last press and the next.
    void setRules(ClickRules rules) { m_rules = rules; }

    struct Press {
        TimePoint time;
        Point at; ///< In pixels.
        std::uint32_t window =
            0; ///< The top-level window that got it, or would get it; 0 where nobody knows.
    };

    /// A press that a program has received. `scale` is pixels for each point.
    void addPress(const Press& press, double scale);

    /// The next press begins a series of its own.
    void reset() { m_count = 0; }

    /// Which press of its series the last one was: 1 for a single click, 2 for a double one; 0 before any.
    int count() const { return m_count; }

    /// Whether programs have had the double click already whose first or second click (`clickState`) is asked for. It
    /// comes at the second release of a double tap: the press of its second tap, which is still held, may have been it,
    /// or may become it by one more press.
    bool hasDoubleClick(std::int64_t clickState, bool isHeld) const
    {
        return m_count >= 2 && (isHeld || clickState == 2);
    }

private:
    bool isContinuedBy(const Press& press, double scale) const;

    ClickRules m_rules;
    int m_count = 0;
    Press m_last;
};

} // namespace companion
