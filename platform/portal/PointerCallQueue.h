#pragma once

#include "platform/Geometry.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <variant>

namespace companion {

/// Pointer events for a peer that answers each one. They are sent in order without waiting for answers, up to a limit of
/// unanswered ones; then a move replaces one that waits directly before it. Presses and releases are never left out.
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

    /// One of the events that were sent has been answered.
    void answered();

private:
    void sendWaiting();

    Send m_send;
    std::deque<Event> m_waiting;
    std::size_t m_unanswered = 0;
};

} // namespace companion
