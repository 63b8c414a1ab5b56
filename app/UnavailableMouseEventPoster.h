#pragma once

#include "platform/Log.h"
#include "platform/MouseEventPoster.h"

#include <string>

namespace companion {

/// Stands in where no X server takes synthesised events: touches are dropped, and the log says why at the first one.
/// Everything else of the program works. Main thread only.
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
    void post(const MouseEvent&) override { logOnce(); }
    void post(const KeyEvent&) override { logOnce(); }
    void flush() override { }
    void sync() override { }
    void touchesBegin() override { }
    void touchesEnd() override { }
    void releaseHeldButton() override { }

private:
    void logOnce()
    {
        if (!m_isLogged)
            m_log.log("Cannot inject input: " + m_reason);
        m_isLogged = true;
    }

    SystemLog& m_log;
    std::string m_reason;
    bool m_isLogged = false;
};

} // namespace companion
