#pragma once

#include "platform/ClickSeries.h"
#include "platform/MouseEventPoster.h"
#include "platform/RetryLimit.h"
#include "platform/ScreenMapping.h"
#include "platform/x11/XTestConnection.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion {

/// Posts input events to an X server by XTEST, on a connection of its own.
///
/// Moves wait in a buffer for `flush`; presses and releases are sent at once. What the server still holds down is
/// released on destruction. A lost connection is opened again at the next mouse event, at most once a second.
///
/// X events carry no click state. A press that asks for none is always posted; those of a double click (states 1
/// and 2) only as far as programs, which count the presses they get, have not had their double click yet. A press
/// while the button is held (its release was never posted, or was lost) is preceded by a release where the pointer
/// is: the server would ignore a second press, and the way to it would become a drag.
///
/// X events carry no modifier flags either: a key pressed with the Control flag has the left Control key held
/// down around it, until the key is released.
class XTestMouseEventPoster : public MouseEventPoster {
public:
    /// Where the main screen lies now; nothing when there is none. Asked at every event.
    using Mapping = std::function<std::optional<ScreenMapping>()>;
    /// As the desktop has them now. Asked at presses, never at a move.
    using Rules = std::function<ClickRules()>;
    using Now = std::function<ClickSeries::TimePoint()>;

    /// An empty name stands for $DISPLAY. Nothing, and why in one line, when events cannot be posted there.
    static std::unique_ptr<XTestMouseEventPoster> open(
        const std::string& displayName, Mapping mapping, std::string& whyNot,
        Rules rules = [] { return ClickRules(); }, Now now = std::chrono::steady_clock::now);

    ~XTestMouseEventPoster() override;

    /// Receives the server's errors, its loss and its return. It must outlive the poster.
    void setLog(SystemLog& log);

    /// Nothing when there is no main screen.
    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override;

    /// Nothing for keys other than 56, the left Shift key, and when the keyboard has no such key.
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override;

    void post(const MouseEvent& event) override;
    void post(const KeyEvent& event) override;

    void flush() override { m_connection->flush(); }
    void sync() { m_connection->sync(); } ///< Waits until the server has done what was posted.
    void touchesBegin() override;
    void touchesEnd() override;

    /// Works on a short-lived connection of its own.
    void releaseHeldButton() override;

private:
    enum Held : unsigned { leftButton = 1, shiftKey = 2, controlKey = 4 };

    /// The server has yet to say when it made it.
    struct UncountedPress {
        ClickSeries::Press press;
        double scale;
    };

    XTestMouseEventPoster(std::unique_ptr<XTestConnection> connection, Mapping mapping, Rules rules, Now now);

    using Surroundings = std::optional<XTestConnection::Surroundings>;

    void reconnectIfLost();
    RootPixel toRootPixel(Point point, const ScreenMapping& mapping);
    void postClick(std::int64_t clickState, RootPixel at, double scale);
    void press(RootPixel at, double scale);
    void countPresses();
    void release(RootPixel at);
    void drag(RootPixel to);
    Surroundings lookAt(RootPixel target);
    Surroundings moveUnlessThere(RootPixel to);
    void move(RootPixel to);
    void setLeftButtonDown(bool isDown);
    void setKeyDown(Held key, bool isDown);
    template <typename Send> void pressUnlessEnded(Held what, Send send);
    void waitForPressOnItsWay() const;
    bool holds(Held what) const { return (m_held & what) != 0; }

    static unsigned keycodeFor(XTestConnection& connection, Held key);
    static void releaseAll(XTestConnection& connection, unsigned held, unsigned button);

    std::unique_ptr<XTestConnection> m_connection;
    const std::string m_displayName;
    Mapping m_mapping;
    Rules m_rules;
    Now m_now;
    SystemLog* m_log = nullptr;
    RetryLimit m_reconnects;
    ClickSeries m_clicks;
    std::optional<UncountedPress> m_uncountedPress;
    std::optional<ScreenMapping> m_areaIsOf; ///< The mapping that the server was asked about.
    RootArea m_area;
    std::optional<RootPixel> m_lastMove;
    bool m_leavesOutClick = false;
    std::atomic<unsigned> m_held = 0; ///< Never less than what the server holds down for us.
    std::atomic<bool> m_isPressing = false;
    std::atomic<bool> m_hasEnded = false;
    std::atomic<unsigned> m_pressedButton =
        1; ///< The physical one that stands for the left one while it is held.
};

} // namespace companion
