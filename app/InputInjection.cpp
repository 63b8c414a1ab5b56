#include "app/InputInjection.h"

#include "platform/qt/QtScreen.h"
#include "platform/x11/XTestMouseEventPoster.h"

#include <chrono>
#include <QGuiApplication>
#include <QStyleHints>
#include <string>
#include <utility>

namespace companion {

namespace {

/// Everything of the program but touches works without a way to inject input.
class UnavailableMouseEventPoster : public MouseEventPoster {
public:
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
        if (!std::exchange(m_isLogged, true))
            m_log.log("Cannot inject input: " + m_reason);
    }

    SystemLog& m_log;
    const std::string m_reason;
    bool m_isLogged = false;
};

/// When X programs take two presses for a double click, as far as this desktop tells.
ClickRules desktopClickRules()
{
    ClickRules rules;
    rules.interval = std::chrono::milliseconds(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    rules.distance = QGuiApplication::styleHints()->mouseDoubleClickDistance();
    return rules;
}

bool isWaylandSession()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
        || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

} // namespace

std::unique_ptr<MouseEventPoster> openMouseEventPoster(const QtScreen& screen, SystemLog& log)
{
    std::string whyNot;
    auto poster = XTestMouseEventPoster::open(
        "", [&screen] { return screen.mapping(); }, whyNot, desktopClickRules);
    if (!poster)
        return std::make_unique<UnavailableMouseEventPoster>(log, whyNot);
    poster->setLog(log);
    // XTEST works there, too, but what it posts reaches X11 programs only, and nothing fails.
    log.log(isWaylandSession()
            ? "On Wayland touches reach X11 programs only; an X11 session has no such limit"
            : "Touches are injected with the XTEST extension of the X server");
    return poster;
}

} // namespace companion
