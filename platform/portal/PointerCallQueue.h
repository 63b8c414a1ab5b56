#pragma once

#include "platform/Geometry.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <variant>

namespace companion {

/// Pointer events for a peer that answers each one and may handle two at the same time in any order: each one is sent
/// when the one before has been answered, which nobody waits for. Once 64 are unanswered, sent or not, a move replaces
/// one that waits directly before it. Presses and releases are never left out.
class PointerCallQueue {
public:
    static constexpr std::size_t mostUnanswered = 64;

    struct ButtonChange {
        bool isDown = false;
    };
    using Event = std::variant<Point, ButtonChange>; ///< A point is a move there.
    using Send = std::function<void(const Event&)>;

    /// `send` is called within `add` and `answered`, and calls neither.
    explicit PointerCallQueue(Send send);

    void add(const Event& event);

    /// The event that was sent has been answered.
    void answered();

private:
    void sendNext();

    Send m_send;
    std::deque<Event> m_waiting;
    bool m_isAnswerDue = false;
};

} // namespace companion
