#pragma once

#include "platform/ClickSeries.h"
#include "platform/MouseEventPoster.h"
#include "platform/PointerDevice.h"
#include "platform/Screen.h"

#include <atomic>
#include <functional>
#include <memory>

namespace companion {

/// Posts mouse events with a pointer device, as on Wayland. Main thread only, but for `releaseHeldButton`.
///
/// Events that come while the device cannot deliver them are dropped; the release of a press that was dropped is, too.
class PointerEventPoster : public MouseEventPoster {
public:
    using Rules = std::function<ClickRules()>;
    using Now = std::function<ClickSeries::TimePoint()>;

    /// `screen`, in whose points events lie, must outlive this object. `rules` is asked at every press.
    PointerEventPoster(std::unique_ptr<PointerDevice> device, const Screen& screen, Rules rules,
        Now now = std::chrono::steady_clock::now);
    ~PointerEventPoster() override;

    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override;

    /// Nothing: there are no modifier keys.
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override;

    /// A double click that programs have counted already is not posted once more.
    void post(const MouseEvent& event) override;
    void post(const KeyEvent&) override { }
    void flush() override { m_device->flush(); }
    void touchesBegin() override;
    void touchesEnd() override;

    void releaseHeldButton() override;

private:
    /// A position on the device, and the device's units for each point of the screen.
    struct Place {
        Point at;
        double scale;
    };

    std::optional<Place> placeOf(Point point) const;
    void postClick(std::int64_t clickState, const Place& place);
    void press(const Place& place);
    void release(Point at);
    void moveUnlessThere(Point to);
    void setLeftButtonDown(bool isDown);

    const std::unique_ptr<PointerDevice> m_device;
    const Screen& m_screen;
    const Rules m_rules;
    const Now m_now;
    ClickSeries m_clicks;
    std::optional<Point> m_lastMove;
    std::atomic<bool> m_isHeld = false;
    bool m_leavesOutClick = false;
    std::atomic<bool> m_hasEnded = false;
};

} // namespace companion
