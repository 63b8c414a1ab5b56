#include "platform/x11/XTestConnection.h"

#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>

#include <cstdio>

namespace companion {

namespace {

constexpr unsigned leftButton = 1;

bool hasXTest(Display* display)
{
    int eventBase = 0;
    int errorBase = 0;
    int major = 0;
    int minor = 0;
    return XTestQueryExtension(display, &eventBase, &errorBase, &major, &minor);
}

// Xlib's own handlers end the process, and there is one of each for all connections of a process. Connections of
// others still end it when they are lost, by their own exit handler.
int reportError(Display* display, XErrorEvent* error)
{
    char text[128] = "";
    XGetErrorText(display, error->error_code, text, sizeof text);
    std::fprintf(
        stderr, "X error ignored: %s (request %d.%d)\n", text, error->request_code, error->minor_code);
    return 0;
}

int reportLoss(Display* display)
{
    std::fprintf(stderr, "The connection to the X display \"%s\" is lost\n", DisplayString(display));
    return 0;
}

} // namespace

std::unique_ptr<XTestConnection> XTestConnection::open(const std::string& displayName, std::string& whyNot)
{
    const char* name = displayName.empty() ? nullptr : displayName.c_str();
    Display* display = XOpenDisplay(name);
    if (!display) {
        whyNot = "Cannot open the X display \"" + std::string(XDisplayName(name)) + "\"";
        return nullptr;
    }
    std::unique_ptr<XTestConnection> connection(new XTestConnection(display));
    if (!hasXTest(display)) {
        whyNot = "The X display \"" + connection->displayName() + "\" has no XTEST extension";
        return nullptr;
    }
    return connection;
}

XTestConnection::XTestConnection(_XDisplay* display)
    : m_display(display)
    , m_screen(DefaultScreen(display))
{
    XSetErrorHandler(reportError);
    XSetIOErrorHandler(reportLoss);
    XSetIOErrorExitHandler(
        display, [](Display*, void* self) { static_cast<XTestConnection*>(self)->m_isLost = true; }, this);
}

XTestConnection::~XTestConnection()
{
    XCloseDisplay(m_display);
}

std::string XTestConnection::displayName() const
{
    return DisplayString(m_display);
}

void XTestConnection::move(RootPixel to)
{
    if (!m_isLost)
        XTestFakeMotionEvent(m_display, m_screen, to.x, to.y, CurrentTime);
}

void XTestConnection::setLeftButtonDown(bool isDown)
{
    if (!m_isLost)
        XTestFakeButtonEvent(m_display, leftButton, isDown, CurrentTime);
}

void XTestConnection::setKeyDown(unsigned keycode, bool isDown)
{
    if (!m_isLost)
        XTestFakeKeyEvent(m_display, keycode, isDown, CurrentTime);
}

void XTestConnection::flush()
{
    if (!m_isLost)
        XFlush(m_display);
}

void XTestConnection::sync()
{
    if (!m_isLost)
        XSync(m_display, /*discard=*/False);
}

std::optional<XTestConnection::Pointer> XTestConnection::pointer()
{
    if (m_isLost)
        return std::nullopt;
    Window root = 0;
    Window child = 0;
    Pointer pointer;
    int childX = 0;
    int childY = 0;
    unsigned state = 0;
    const bool isOnOurScreen = XQueryPointer(m_display, RootWindow(m_display, m_screen), &root, &child,
        &pointer.at.x, &pointer.at.y, &childX, &childY, &state);
    discardEvents();
    if (!isOnOurScreen || m_isLost)
        return std::nullopt;
    pointer.isLeftButtonDown = (state & Button1Mask) != 0;
    return pointer;
}

RootPixel XTestConnection::reachablePixel(RootPixel pixel)
{
    if (m_isLost)
        return pixel;
    // Asked for each time: the root window grows and shrinks with the monitors, Xlib's copy of its size does not.
    Window root = 0;
    int x = 0;
    int y = 0;
    unsigned width = 0;
    unsigned height = 0;
    unsigned border = 0;
    unsigned depth = 0;
    if (!XGetGeometry(
            m_display, RootWindow(m_display, m_screen), &root, &x, &y, &width, &height, &border, &depth))
        return pixel;
    return clampedTo(pixel, static_cast<int>(width), static_cast<int>(height));
}

unsigned XTestConnection::keycodeOf(unsigned long keysym)
{
    return m_isLost ? 0 : XKeysymToKeycode(m_display, keysym);
}

// Every client is told of a new keyboard layout, asked or not; they would pile up.
void XTestConnection::discardEvents()
{
    while (!m_isLost && XEventsQueued(m_display, QueuedAlready) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == MappingNotify)
            XRefreshKeyboardMapping(&event.xmapping);
    }
}

} // namespace companion
