#include "bench/touch-path/PointerObserver.h"

#include <X11/Xlib.h>

#include <ctime>
#include <poll.h>
#include <stdexcept>

namespace companion::bench {

namespace {

bool waitReadable(int fd, PointerObserver::TimePoint deadline)
{
    const auto left =
        std::chrono::duration_cast<std::chrono::nanoseconds>(deadline - std::chrono::steady_clock::now());
    const long nanoseconds = std::max(left.count(), 0L);
    const timespec timeout{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
    pollfd waiting{fd, POLLIN, 0};
    return ppoll(&waiting, 1, &timeout, nullptr) > 0;
}

} // namespace

PointerObserver::PointerObserver(const std::string& display)
    : m_display(XOpenDisplay(display.c_str()))
{
    if (!m_display)
        throw std::runtime_error("cannot open display " + display);
    const int screen = DefaultScreen(m_display);
    XSetWindowAttributes attributes = {};
    attributes.override_redirect = True;
    attributes.event_mask = PointerMotionMask;
    const Window window = XCreateWindow(m_display, RootWindow(m_display, screen), 0, 0,
        static_cast<unsigned>(DisplayWidth(m_display, screen)),
        static_cast<unsigned>(DisplayHeight(m_display, screen)), 0, CopyFromParent, InputOutput,
        CopyFromParent, CWOverrideRedirect | CWEventMask, &attributes);
    XMapRaised(m_display, window);
    XSync(m_display, False);
}

PointerObserver::~PointerObserver()
{
    XCloseDisplay(m_display);
}

std::optional<PointerObserver::Motion> PointerObserver::next(TimePoint deadline)
{
    for (;;) {
        while (XPending(m_display) > 0) {
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == MotionNotify)
                return Motion{event.xmotion.x_root, event.xmotion.y_root};
        }
        if (!waitReadable(ConnectionNumber(m_display), deadline))
            return std::nullopt;
    }
}

} // namespace companion::bench
