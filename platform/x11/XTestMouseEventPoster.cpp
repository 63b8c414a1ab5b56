#include "platform/x11/XTestMouseEventPoster.h"

#include <X11/keysym.h>

#include <chrono>
#include <future>
#include <thread>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr std::uint16_t leftShiftKeyCode = 56;
constexpr auto longestWaitForPress = 100ms;
constexpr auto longestWaitForRelease = 1s;

} // namespace

std::unique_ptr<XTestMouseEventPoster> XTestMouseEventPoster::open(
    const std::string& displayName, Mapping mapping, std::string& whyNot, Rules rules, Now now)
{
    std::unique_ptr<XTestConnection> connection = XTestConnection::open(displayName, whyNot);
    if (!connection)
        return nullptr;
    return std::unique_ptr<XTestMouseEventPoster>(new XTestMouseEventPoster(
        std::move(connection), std::move(mapping), std::move(rules), std::move(now)));
}

XTestMouseEventPoster::XTestMouseEventPoster(
    std::unique_ptr<XTestConnection> connection, Mapping mapping, Rules rules, Now now)
    : m_connection(std::move(connection))
    , m_displayName(m_connection->displayName())
    , m_mapping(std::move(mapping))
    , m_rules(std::move(rules))
    , m_now(std::move(now))
    , m_clicks(m_rules())
{
    touchesBegin();
}

XTestMouseEventPoster::~XTestMouseEventPoster()
{
    releaseAll(*m_connection, m_held, m_pressedButton);
}

void XTestMouseEventPoster::setLog(SystemLog& log)
{
    m_log = &log;
    m_connection->setLog(log);
}

std::optional<MouseEvent> XTestMouseEventPoster::makeMouseEvent(MouseEventType type, Point at)
{
    if (!m_mapping())
        return std::nullopt;
    return MouseEvent{type, at, 0};
}

std::optional<KeyEvent> XTestMouseEventPoster::makeKeyEvent(std::uint16_t keyCode, bool isDown)
{
    if (keyCode != leftShiftKeyCode || keycodeFor(*m_connection, shiftKey) == 0)
        return std::nullopt;
    return KeyEvent{keyCode, isDown, 0};
}

void XTestMouseEventPoster::post(const MouseEvent& event)
{
    reconnectIfLost();
    const std::optional<ScreenMapping> mapping = m_mapping();
    if (!mapping) {
        // The screen went away since the event was made; a finger that is lifted must not leave the button held.
        if (event.type == MouseEventType::leftUp && holds(leftButton))
            setLeftButtonDown(false);
        return;
    }

    const RootPixel at = toRootPixel(event.at, *mapping);
    const bool isSecondClick = event.clickState == 2;
    if (event.type == MouseEventType::leftDragged)
        drag(at);
    else if (event.type == MouseEventType::leftDown && event.clickState != 0)
        postClick(event.clickState, at, mapping->scale);
    else if (event.type == MouseEventType::leftDown)
        press(at, mapping->scale);
    else if (!isSecondClick || !m_leavesOutClick)
        release(at);
}

// The server is asked once for each place that the screen has had, since moves must not wait for it.
RootPixel XTestMouseEventPoster::toRootPixel(Point point, const ScreenMapping& mapping)
{
    if (m_areaIsOf != mapping) {
        m_area = areaOf(mapping, m_connection->monitors());
        m_areaIsOf = mapping;
    }
    return companion::toRootPixel(point, mapping, m_area);
}

void XTestMouseEventPoster::reconnectIfLost()
{
    if (!m_connection->isLost() || !m_reconnects.isDue(m_now()))
        return;
    std::string whyNot;
    std::unique_ptr<XTestConnection> connection = XTestConnection::open(m_displayName, whyNot);
    if (!connection)
        return;
    m_connection = std::move(connection);
    m_uncountedPress.reset();
    m_areaIsOf.reset();
    m_lastMove.reset();
    m_clicks.reset();
    if (!m_log)
        return;
    m_connection->setLog(*m_log);
    m_log->log("The connection to the X display \"" + m_displayName + "\" is back");
}

// The first click of a double click that programs have had already is left out; the release that follows ends the
// held press.
void XTestMouseEventPoster::postClick(std::int64_t clickState, RootPixel at, double scale)
{
    lookAt(at);
    m_leavesOutClick = m_clicks.hasDoubleClick(clickState, holds(leftButton));
    if (m_leavesOutClick)
        return;
    if (holds(leftButton))
        release(at);
    press(at, scale);
}

void XTestMouseEventPoster::press(RootPixel at, double scale)
{
    if (holds(leftButton))
        setLeftButtonDown(false);
    const Surroundings seen = moveUnlessThere(at);
    // Held, but not by us: either by a real mouse, which this release does not concern, or by a program that died
    // with the button down, because of which the server would ignore our press.
    if (seen && seen->isLeftButtonDown)
        m_connection->setButtonDown(m_connection->leftButton(), false);
    setLeftButtonDown(true);
    m_uncountedPress = {
        {{}, {static_cast<double>(at.x), static_cast<double>(at.y)}, seen ? seen->window : 0}, scale};
}

void XTestMouseEventPoster::release(RootPixel at)
{
    moveUnlessThere(at);
    if (holds(leftButton))
        setLeftButtonDown(false);
}

// The pointer follows other devices, too, so a motion to where the last one went may be needed.
void XTestMouseEventPoster::drag(RootPixel to)
{
    if (m_lastMove == to)
        moveUnlessThere(to);
    else
        move(to);
}

// A loss may be noticed only here, by the first round trip, and the touch that notices it must not be lost with it.
XTestMouseEventPoster::Surroundings XTestMouseEventPoster::lookAt(RootPixel target)
{
    Surroundings seen = m_connection->lookAt(target);
    if (!seen && m_connection->isLost()) {
        reconnectIfLost();
        seen = m_connection->lookAt(target);
    }
    countPresses();
    return seen;
}

// Programs count by the server's time of a press, which is later than ours when the server stood still, so that two of
// them may be closer together or further apart than they were sent. A press of another hand ends the series.
void XTestMouseEventPoster::countPresses()
{
    for (const auto& [time, isByXTest] : m_connection->takePresses()) {
        if (!isByXTest || !m_uncountedPress) {
            m_clicks.reset();
            continue;
        }
        m_uncountedPress->press.time = ClickSeries::TimePoint(time);
        m_clicks.setRules(m_rules());
        m_clicks.addPress(m_uncountedPress->press, m_uncountedPress->scale);
        m_uncountedPress.reset();
    }
}

// A motion to where the pointer is already is an event like any other: between a press and its release programs
// take it for a drag. The real mouse moves the pointer too, so the server is asked.
XTestMouseEventPoster::Surroundings XTestMouseEventPoster::moveUnlessThere(RootPixel to)
{
    const Surroundings seen = lookAt(to);
    m_lastMove = to;
    const bool isThere = seen && (seen->pointer == to || seen->pointer == seen->target);
    if (!isThere)
        move(to);
    return seen;
}

void XTestMouseEventPoster::move(RootPixel to)
{
    m_connection->move(to);
    m_lastMove = to;
}

// Sent at once: programs measure double clicks by the time at which the server sees a press, and what is held is
// known to another thread in time, before a press and after a release.
void XTestMouseEventPoster::setLeftButtonDown(bool isDown)
{
    const auto send = [&] {
        m_connection->setButtonDown(m_pressedButton, isDown);
        m_connection->flush();
    };
    if (isDown) {
        m_pressedButton = m_connection->leftButton();
        pressUnlessEnded(leftButton, send);
        return;
    }
    send();
    m_held &= ~static_cast<unsigned>(leftButton);
}

// A press is on its way before the look at whether there may be one, and the other thread first says that there may
// be none and then looks for one on its way: whichever comes first, one of the two sees the other.
template <typename Send> void XTestMouseEventPoster::pressUnlessEnded(Held what, Send send)
{
    m_isPressing = true;
    if (!m_hasEnded) {
        m_held |= what;
        send();
    }
    m_isPressing = false;
}

void XTestMouseEventPoster::post(const KeyEvent& event)
{
    if (event.keyCode != leftShiftKeyCode)
        return;
    if (event.isDown && event.flags == controlModifierFlag)
        setKeyDown(controlKey, true); // first, so that the key's own event says that Control is held
    setKeyDown(shiftKey, event.isDown);
    if (!event.isDown)
        setKeyDown(controlKey, false);
}

void XTestMouseEventPoster::setKeyDown(Held key, bool isDown)
{
    if (holds(key) == isDown)
        return;
    const unsigned keycode = keycodeFor(*m_connection, key);
    if (keycode == 0)
        return;
    const auto send = [&] {
        m_connection->setKeyDown(keycode, isDown);
        m_connection->flush();
    };
    if (isDown) {
        pressUnlessEnded(key, send);
        return;
    }
    send();
    m_held &= ~static_cast<unsigned>(key);
}

// The server ignores the release of a button that XTEST's device does not hold, whatever a real mouse holds.
void XTestMouseEventPoster::touchesBegin()
{
    m_areaIsOf.reset();
    if (holds(leftButton))
        return;
    m_connection->setButtonDown(m_connection->leftButton(), false);
    m_connection->flush();
}

void XTestMouseEventPoster::touchesEnd()
{
    if (holds(leftButton))
        setLeftButtonDown(false);
    setKeyDown(shiftKey, false);
    setKeyDown(controlKey, false);
}

void XTestMouseEventPoster::releaseHeldButton()
{
    m_hasEnded = true;
    waitForPressOnItsWay();
    const unsigned held = m_held;
    if (held == 0)
        return;
    auto isDone = std::make_shared<std::promise<void>>();
    std::thread([isDone, name = m_displayName, held, button = m_pressedButton.load()] {
        std::string whyNot;
        if (const auto connection = XTestConnection::open(name, whyNot))
            releaseAll(*connection, held, button);
        isDone->set_value();
    }).detach();
    isDone->get_future().wait_for(longestWaitForRelease);
}

// The release must not overtake it, being sent on another connection. Not for long: the server may hang.
void XTestMouseEventPoster::waitForPressOnItsWay() const
{
    for (auto waited = 0ms; m_isPressing && waited < longestWaitForPress; waited += 1ms)
        std::this_thread::sleep_for(1ms);
}

unsigned XTestMouseEventPoster::keycodeFor(XTestConnection& connection, Held key)
{
    return connection.keycodeOf(key == shiftKey ? XK_Shift_L : XK_Control_L);
}

void XTestMouseEventPoster::releaseAll(XTestConnection& connection, unsigned held, unsigned button)
{
    if (held & leftButton)
        connection.setButtonDown(button, false);
    for (const Held key : {shiftKey, controlKey}) {
        if (held & key)
            connection.setKeyDown(keycodeFor(connection, key), false);
    }
    connection.sync();
}

} // namespace companion
