#include "bench/touch-path/X11PointerObserver.h"

#include <X11/Xlib.h>

#include <stdexcept>

namespace companion::bench {

X11PointerObserver::X11PointerObserver(const std::string& display)
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

X11PointerObserver::~X11PointerObserver()
{
    XCloseDisplay(m_display);
}

std::optional<X11PointerObserver::Motion> X11PointerObserver::next(TimePoint deadline)
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
