#pragma once

#include "platform/Log.h"
#include "platform/MouseEventPoster.h"

#include <string>

namespace companion {

/// Stands in where no X server takes synthesised events: touches are dropped, and the log says why at the first one.
/// (That of a Wayland desktop takes them, for X11 programs alone.) Everything else of the program works. Main thread
/// only.
class UnavailableMouseEventPoster : public MouseEventPoster {
public:
    /// The log must outlive this object.
    UnavailableMouseEventPoster(SystemLog& log, std::string reason)
        : m_log(log)
        , m_reason(std::move(reason))
    {
    }

    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override
    {
        return MouseEvent{type, at, 0};
    }
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t, bool) override { return std::nullopt; }
    void post(const MouseEvent&) override { tellOnce(); }
    void post(const KeyEvent&) override { tellOnce(); }

private:
    void tellOnce()
    {
        if (!m_isTold)
            m_log.log("Touches cannot work this computer: " + m_reason);
        m_isTold = true;
    }

    SystemLog& m_log;
    std::string m_reason;
    bool m_isTold = false;
};

} // namespace companion
