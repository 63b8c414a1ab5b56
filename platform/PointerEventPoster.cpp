#include "platform/PointerEventPoster.h"

#include <algorithm>
#include <utility>

namespace companion {

namespace {

/// Positions behind the last pixel are none to a window server.
double inside(double position, double size)
{
    return std::clamp(position, 0.0, std::max(0.0, size - 1));
}

} // namespace

PointerEventPoster::PointerEventPoster(
    std::unique_ptr<PointerDevice> device, const Screen& screen, Rules rules, Now now)
    : m_device(std::move(device))
    , m_screen(screen)
    , m_rules(std::move(rules))
    , m_now(std::move(now))
    , m_clicks(m_rules())
{
}

PointerEventPoster::~PointerEventPoster()
{
    touchesEnd();
}

std::optional<MouseEvent> PointerEventPoster::makeMouseEvent(MouseEventType type, Point at)
{
    return MouseEvent{type, at, 0};
}

std::optional<KeyEvent> PointerEventPoster::makeKeyEvent(std::uint16_t, bool)
{
    return std::nullopt;
}

void PointerEventPoster::post(const MouseEvent& event)
{
    const std::optional<Place> place = placeOf(event.at);
    if (!place) {
        touchesEnd();
        return;
    }
    const bool isSecondClick = event.clickState == 2;
    if (event.type == MouseEventType::leftDragged)
        moveUnlessThere(place->at);
    else if (event.type == MouseEventType::leftDown && event.clickState != 0)
        postClick(event.clickState, *place);
    else if (event.type == MouseEventType::leftDown)
        press(*place);
    else if (!isSecondClick || !m_leavesOutClick)
        release(place->at);
}

/// Nothing when there is no screen, or the device cannot deliver.
std::optional<PointerEventPoster::Place> PointerEventPoster::placeOf(Point point) const
{
    const std::optional<Size> area = m_device->area();
    const std::optional<Size> screen = m_screen.mainScreenSize();
    if (!area || !screen || screen->width <= 0 || screen->height <= 0)
        return std::nullopt;
    const double scale = area->width / screen->width;
    return Place{
        {inside(point.x * scale, area->width), inside(point.y * area->height / screen->height, area->height)},
        scale};
}

// The first click of a double click that programs have had already is left out; the release that follows ends the
// held press.
void PointerEventPoster::postClick(std::int64_t clickState, const Place& place)
{
    m_leavesOutClick = m_clicks.hasDoubleClick(clickState, m_isHeld);
    if (m_leavesOutClick)
        return;
    release(place.at);
    press(place);
}

void PointerEventPoster::press(const Place& place)
{
    if (m_hasEnded)
        return;
    if (m_isHeld)
        setLeftButtonDown(false);
    moveUnlessThere(place.at);
    setLeftButtonDown(true);
    m_clicks.setRules(m_rules());
    m_clicks.addPress({m_now(), place.at}, place.scale);
}

void PointerEventPoster::release(Point at)
{
    if (!m_isHeld)
        return;
    moveUnlessThere(at);
    setLeftButtonDown(false);
}

// Programs take a motion between a press and its release for a drag, even one that leads nowhere.
void PointerEventPoster::moveUnlessThere(Point to)
{
    if (m_isHeld && m_lastMove == to)
        return;
    m_device->moveTo(to);
    m_lastMove = to;
}

void PointerEventPoster::setLeftButtonDown(bool isDown)
{
    m_isHeld = isDown;
    m_device->setLeftButtonDown(isDown);
}

void PointerEventPoster::touchesBegin()
{
    m_device->touchesBegin();
}

void PointerEventPoster::touchesEnd()
{
    if (m_isHeld.exchange(false) && m_device->area())
        m_device->setLeftButtonDown(false);
}

void PointerEventPoster::releaseHeldButton()
{
    m_hasEnded = true;
    if (m_isHeld)
        m_device->releaseWhenProgramFails();
}

} // namespace companion
