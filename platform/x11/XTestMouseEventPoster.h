#pragma once

#include "platform/MouseEventPoster.h"
#include "platform/ScreenMapping.h"
#include "platform/x11/ClickSeries.h"
#include "platform/x11/XTestConnection.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion {

/// Posts input events to an X server by XTEST, on a connection of its own. Main thread only, but for
/// `releaseHeldButton`.
///
/// Moves wait in a buffer for `flush`; presses and releases are sent at once. What the server still holds down is
/// released on destruction.
///
/// X events carry no click state. A press that asks for none is always posted; those of a double click (states 1
/// and 2) only as far as programs, which count the presses they get, have not had their double click yet. While
/// the button is held, a further press is only a move: the server would ignore it.
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

    /// Where it is told that the server is gone, or refuses something. It must outlive the poster.
    void setLog(SystemLog& log) { m_connection->setLog(log); }

    /// Nothing when there is no main screen.
    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override;

    /// Nothing for keys other than 56, the left Shift key, and when the keyboard has no such key.
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override;

    void post(const MouseEvent& event) override;
    void post(const KeyEvent& event) override;

    void flush() { m_connection->flush(); }

    /// Flushes and waits until the server has processed, and stamped with its time, what was posted.
    void sync() { m_connection->sync(); }

    /// Releases what this object holds down, where the pointer is. What is pressed later is pressed as ever.
    void letGo();

    /// Releases what this object holds down, on a short-lived connection. Any thread, also while the main thread
    /// is stuck or posting; for the way out of a process: nothing is pressed any more. A server that hangs is waited
    /// for no longer than a second.
    void releaseHeldButton();

private:
    enum Held : unsigned { leftButton = 1, shiftKey = 2, controlKey = 4 };

    XTestMouseEventPoster(std::unique_ptr<XTestConnection> connection, Mapping mapping, Rules rules, Now now);

    void postFirstClick(RootPixel at, double scale);
    int missingPresses(RootPixel at, double scale);
    void press(RootPixel at, double scale);
    void release(RootPixel at);
    void drag(RootPixel to);
    std::optional<XTestConnection::Pointer> moveUnlessThere(RootPixel to);
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
    ClickSeries m_clicks;
    std::optional<RootPixel> m_lastMove;
    bool m_leavesOutSecondClick = false;
    std::atomic<unsigned> m_held = 0; ///< Never less than what the server holds down for us.
    std::atomic<bool> m_isPressing = false;
    std::atomic<bool> m_hasEnded = false;
    std::atomic<unsigned> m_pressedButton =
        1; ///< The physical one that stands for the left one while it is held.
};

} // namespace companion
