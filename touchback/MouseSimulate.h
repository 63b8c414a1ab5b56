#pragma once

#include "platform/Clock.h"
#include "platform/Geometry.h"
#include "platform/Log.h"
#include "platform/MouseEventPoster.h"
#include "platform/Screen.h"

#include <cstdint>
#include <string_view>

namespace companion {

/// Milliseconds since 1970, to the nearest one (halves away from zero). Fatal when 64 bits cannot hold them.
std::int64_t toMilliseconds(double secondsSince1970);

/// Seconds since 1970. The part below a second is dropped, towards zero.
double dateFromMilliseconds(std::int64_t milliseconds);

/// Turns touches into events of the left mouse button, at the matching point of the main screen. Main thread only.
///
/// Releases pair up strictly alternately: a second one that comes soon and near becomes a double click, whatever
/// lies between the two. What pairs them is kept for the object's lifetime. That no screen is there, that an event
/// cannot be made or that the clock is out of range is a fatal error.
class MouseSimulate {
public:
    /// A delay of half a second that no operation takes.
    static constexpr std::uint32_t kDelayUSec = 500'000;

    /// All of them must outlive this object.
    MouseSimulate(Clock& clock, Screen& screen, Pause& pause, MouseEventPoster& poster, Console& console);
    virtual ~MouseSimulate() = default;
    MouseSimulate(const MouseSimulate&) = delete;
    MouseSimulate& operator=(const MouseSimulate&) = delete;

    // Points lie in the main screen's space and may be off the screen.
    virtual void simulateMouseDown(Point at);

    /// The first release of a pair is posted. The second one is a double click when it comes at most 800 ms later
    /// at a distance of at most 50 points; farther away nothing is posted, so that the button stays down; later
    /// it is posted.
    virtual void simulateMouseUp(Point at);
    virtual void simulateMouseDrag(Point at);

    /// A press and a release 100 ms later; blocks meanwhile.
    virtual void simulateSingleClick(Point at);

    /// A click with a modifier key held down; blocks for 50 ms.
    virtual void simulateRightClick(Point at);

    /// Two clicks 1 ms apart; blocks meanwhile.
    virtual void simulateDoubleClick(Point at);

    /// One touch: `event` is "UP", "DOWN" or "MOVE", the coordinates are decimal texts, 0 to 32767 across and down
    /// the panel, but not held to that range. A touch whose coordinates are no numbers, and any other event, is
    /// dropped silently. The time stamp is not used.
    virtual void initiateMouseEvent(std::string_view event, std::string_view xCoordinate,
        std::string_view yCoordinate, std::string_view timeStamp);

    /// initiateMouseEventWithEvent:xCoordinate:yCoordinate:timeStamp:
    void initiateMouseEventWithEvent(std::string_view event, std::string_view xCoordinate,
        std::string_view yCoordinate, std::string_view timeStamp)
    {
        initiateMouseEvent(event, xCoordinate, yCoordinate, timeStamp);
    }

    /// Where and when, in milliseconds since 1970, the last press was posted.
    Point mouseDownPoint() const { return m_mouseDownPoint; }
    std::int64_t mouseDownTime() const { return m_mouseDownTime; }

    /// What the second release of a pair is compared with. A late second release moves the point, not the time.
    Point mouseUpPoint() const { return m_mouseUpPoint; }
    std::int64_t mouseUpTime() const { return m_mouseUpTime; }

    /// 0 when the next release is the first of a pair, 1 when it is the second.
    std::int64_t singleClickCount() const { return m_singleClickCount; }

    /// Stays 0.
    std::int64_t rightClickCount() const { return m_rightClickCount; }

private:
    MouseEvent makeEvent(MouseEventType type, Point at);
    void postWithClickState(MouseEventType type, Point at, std::int64_t clickState);
    void postModifierKey(bool isDown);
    void beginPair(const MouseEvent& up, Point at);
    void endPair(const MouseEvent& up, Point at);
    void endPairQuickly(Point at);
    void printDistance(float distance);
    std::int64_t nowInMilliseconds() const;
    Size requireScreenSize() const;

    Clock& m_clock;
    Screen& m_screen;
    Pause& m_pause;
    MouseEventPoster& m_poster;
    Console& m_console;

    Point m_mouseDownPoint;
    Point m_mouseUpPoint;
    std::int64_t m_mouseDownTime = 0;
    std::int64_t m_mouseUpTime = 0;
    std::int64_t m_singleClickCount = 0;
    std::int64_t m_rightClickCount = 0;
};

} // namespace companion
