#pragma once

#include "platform/Geometry.h"

#include <cstdint>
#include <optional>

namespace companion {

enum class MouseEventType { leftDown = 1, leftUp = 2, leftDragged = 6 };

struct MouseEvent {
    MouseEventType type = MouseEventType::leftDown;
    Point at;
    std::int64_t clickState =
        0; ///< 1 for a single click, 2 for the second click of a double one, 0 left as made.
};

inline constexpr std::uint64_t controlModifierFlag = 0x40000;

struct KeyEvent {
    std::uint16_t keyCode = 0; ///< Virtual key code of the Macintosh keyboard; 56 is the left Shift key.
    bool isDown = false;
    std::uint64_t flags = 0;
};

/// Makes and posts synthesised input events for the left mouse button and the keyboard. Main thread only, but for
/// `releaseHeldButton`.
///
/// Making and posting are two operations, since making can fail for an event that is then not posted.
class MouseEventPoster {
public:
    virtual ~MouseEventPoster() = default;

    /// Makes an event at `at`, in points of the main screen's space, which may lie off the screen.
    /// Nothing when the system cannot make it.
    virtual std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) = 0;

    /// Nothing when the system cannot make it.
    virtual std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) = 0;

    /// Hands the event to the window server; events arrive in call order.
    virtual void post(const MouseEvent& event) = 0;
    virtual void post(const KeyEvent& event) = 0;

    /// Sends what may still wait in a buffer; waits for nothing.
    virtual void flush() = 0;

    /// Touches are expected from now on: releases a button that an earlier run of the program left held, and asks for
    /// the permission that injecting input may take.
    virtual void touchesBegin() = 0;

    /// No touch is expected for now: releases what this object holds down. A later press is posted as ever.
    virtual void touchesEnd() = 0;

    /// Releases what this object holds down when the process is about to end in an error: afterwards nothing is pressed
    /// any more. Any thread, also while the main thread is stuck or posting. Takes a second at most.
    virtual void releaseHeldButton() = 0;
};

} // namespace companion
