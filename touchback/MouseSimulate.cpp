#include "touchback/MouseSimulate.h"

#include "platform/FatalError.h"
#include "touchback/Number.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>

using namespace std::chrono_literals;

namespace companion {

namespace {

constexpr double largestCoordinate = 32767.0;
constexpr std::int64_t longestPairMilliseconds = 800;
constexpr float longestPairDistance = 50.0F;
constexpr std::uint16_t leftShiftKeyCode = 56;

/// In 64 bits first: two points far out may be near each other.
float distanceBetween(Point a, Point b)
{
    return std::hypot(static_cast<float>(a.x - b.x), static_cast<float>(a.y - b.y));
}

} // namespace

std::int64_t toMilliseconds(double secondsSince1970)
{
    constexpr double limit = 9223372036854775808.0; // 2^63
    const double milliseconds = std::round(secondsSince1970 * 1000.0);
    const bool isInRange = milliseconds >= -limit && milliseconds < limit; // false for NaN
    if (!isInRange)
        fatalError("The time is out of range.");
    return static_cast<std::int64_t>(milliseconds);
}

double dateFromMilliseconds(std::int64_t milliseconds)
{
    return static_cast<double>(milliseconds / 1000);
}

MouseSimulate::MouseSimulate(
    Clock& clock, Screen& screen, Pause& pause, MouseEventPoster& poster, Console& console)
    : m_clock(clock)
    , m_screen(screen)
    , m_pause(pause)
    , m_poster(poster)
    , m_console(console)
{
}

void MouseSimulate::initiateMouseEvent(std::string_view event, std::string_view xCoordinate,
    std::string_view yCoordinate, std::string_view /*timeStamp*/)
{
    const std::optional<double> x = parseNumber(xCoordinate);
    if (!x)
        return;
    const std::optional<double> y = parseNumber(yCoordinate);
    if (!y)
        return;

    const double width = requireScreenSize().width;
    const double height = requireScreenSize().height;
    const Point at{(*x / largestCoordinate) * width, (*y / largestCoordinate) * height};
    if (event == "UP")
        simulateMouseUp(at);
    else if (event == "DOWN")
        simulateMouseDown(at);
    else if (event == "MOVE")
        simulateMouseDrag(at);
}

void MouseSimulate::simulateMouseDown(Point at)
{
    m_poster.post(makeEvent(MouseEventType::leftDown, at));
    m_console.print("::: Mouse Down");
    m_mouseDownTime = nowInMilliseconds();
    m_mouseDownPoint = at;
}

void MouseSimulate::simulateMouseUp(Point at)
{
    const MouseEvent up = makeEvent(MouseEventType::leftUp, at);
    if (m_singleClickCount == 0)
        beginPair(up, at);
    else if (m_singleClickCount == 1)
        endPair(up, at);
}

void MouseSimulate::beginPair(const MouseEvent& up, Point at)
{
    m_mouseUpTime = nowInMilliseconds();
    m_singleClickCount = 1;
    m_mouseUpPoint = at;
    m_poster.post(up);
    m_console.print("::: Mouse Up");
}

void MouseSimulate::endPair(const MouseEvent& up, Point at)
{
    m_singleClickCount = 0;
    std::int64_t elapsed = 0;
    if (__builtin_sub_overflow(nowInMilliseconds(), m_mouseUpTime, &elapsed))
        fatalError("The time between two releases is out of range.");
    if (elapsed <= longestPairMilliseconds) {
        endPairQuickly(at);
        return;
    }
    m_poster.post(up);
    m_console.print("::: Mouse Up 1");
    m_mouseUpPoint = at;
}

void MouseSimulate::endPairQuickly(Point at)
{
    const float distance = distanceBetween(m_mouseUpPoint, at);
    printDistance(distance);
    if (distance <= longestPairDistance) {
        simulateDoubleClick(at);
        m_console.print("::: Double Click");
    }
}

void MouseSimulate::simulateMouseDrag(Point at)
{
    m_poster.post(makeEvent(MouseEventType::leftDragged, at));
}

void MouseSimulate::simulateSingleClick(Point at)
{
    const MouseEvent down = makeEvent(MouseEventType::leftDown, at);
    const MouseEvent up = makeEvent(MouseEventType::leftUp, at);
    m_poster.post(down);
    m_pause.pauseFor(100'000us);
    m_poster.post(up);
}

void MouseSimulate::simulateRightClick(Point at)
{
    postModifierKey(/*isDown=*/true);
    m_pause.pauseFor(50'000us);
    const MouseEvent down = makeEvent(MouseEventType::leftDown, at);
    const MouseEvent up = makeEvent(MouseEventType::leftUp, at);
    m_poster.post(down);
    m_poster.post(up);
    postModifierKey(/*isDown=*/false);
}

void MouseSimulate::simulateDoubleClick(Point at)
{
    postWithClickState(MouseEventType::leftDown, at, 1);
    postWithClickState(MouseEventType::leftUp, at, 1);
    m_pause.pauseFor(1'000us);
    postWithClickState(MouseEventType::leftDown, at, 2);
    postWithClickState(MouseEventType::leftUp, at, 2);
}

MouseEvent MouseSimulate::makeEvent(MouseEventType type, Point at)
{
    const std::optional<MouseEvent> event = m_poster.makeMouseEvent(type, at);
    if (!event)
        fatalError("A mouse event cannot be made.");
    return *event;
}

void MouseSimulate::postWithClickState(MouseEventType type, Point at, std::int64_t clickState)
{
    MouseEvent event = makeEvent(type, at);
    event.clickState = clickState;
    m_poster.post(event);
}

/// The key is Shift, the flag is Control's; programs go by the flag.
void MouseSimulate::postModifierKey(bool isDown)
{
    std::optional<KeyEvent> event = m_poster.makeKeyEvent(leftShiftKeyCode, isDown);
    if (!event)
        return;
    if (isDown)
        event->flags = controlModifierFlag;
    m_poster.post(*event);
}

/// As few digits as tell this number from its neighbours. Plain decimals where a float has every digit that they show;
/// a whole number keeps its ".0", so that the line shows a floating-point number whatever the distance. With an exponent
/// where plain decimals would be mostly zeros, or digits that the float does not have.
void MouseSimulate::printDistance(float distance)
{
    constexpr float lowestPlain = 1e-4F;
    constexpr float wholeNumbersEnd = 1 << 24; // from there on not every whole number is a float
    const bool isPlain = distance == 0 || (distance >= lowestPlain && distance < wholeNumbersEnd);

    char line[96] = "::: Double Click distance "; // the longest float has 15 characters
    char* end = std::to_chars(line + std::strlen(line), std::end(line), distance,
        isPlain ? std::chars_format::fixed : std::chars_format::scientific)
                    .ptr;
    if (isPlain && distance == std::trunc(distance))
        end = std::copy_n(".0", 2, end);
    m_console.print({line, static_cast<std::size_t>(end - line)});
}

std::int64_t MouseSimulate::nowInMilliseconds() const
{
    return toMilliseconds(m_clock.secondsSince1970());
}

Size MouseSimulate::requireScreenSize() const
{
    const std::optional<Size> size = m_screen.mainScreenSize();
    if (!size)
        fatalError("There is no main screen.");
    return *size;
}

} // namespace companion
