#include "tests/support/XClient.h"

#include <X11/Xlib.h>

#include <X11/extensions/XInput.h>
#include <X11/extensions/XTest.h>

#include <stdexcept>
#include <string_view>

namespace companion::testing {

XClient::XClient(const std::string& display)
    : m_display(XOpenDisplay(display.c_str()))
{
    if (!m_display)
        throw std::runtime_error("cannot open display " + display);
}

XClient::~XClient()
{
    XCloseDisplay(m_display);
}

void XClient::grabServer()
{
    XGrabServer(m_display);
    XSync(m_display, False);
}

void XClient::ungrabServer()
{
    XUngrabServer(m_display);
    XSync(m_display, False);
}

bool XClient::isLeftButtonDown()
{
    Window root = 0;
    Window child = 0;
    int x = 0;
    int y = 0;
    unsigned mask = 0;
    XQueryPointer(m_display, DefaultRootWindow(m_display), &root, &child, &x, &y, &x, &y, &mask);
    return (mask & Button1Mask) != 0;
}

unsigned long XClient::openWindow(int x, int y, unsigned width, unsigned height)
{
    XSetWindowAttributes attributes{};
    attributes.override_redirect = True;
    const Window window = XCreateWindow(m_display, DefaultRootWindow(m_display), x, y, width, height, 0,
        CopyFromParent, InputOutput, CopyFromParent, CWOverrideRedirect, &attributes);
    XMapRaised(m_display, window);
    XSync(m_display, False);
    return window;
}

void XClient::closeWindow(unsigned long window)
{
    XDestroyWindow(m_display, window);
    XSync(m_display, False);
}

void XClient::raiseWindow(unsigned long window)
{
    XRaiseWindow(m_display, window);
    XSync(m_display, False);
}

bool XClient::clickWithMouse()
{
    int count = 0;
    XDeviceInfo* const devices = XListInputDevices(m_display, &count);
    XDevice* mouse = nullptr;
    for (int i = 0; i < count && !mouse; ++i) {
        const std::string_view name(devices[i].name);
        if (devices[i].use == IsXExtensionPointer && name.find("XTEST") == std::string_view::npos)
            mouse = XOpenDevice(m_display, devices[i].id);
    }
    XFreeDeviceList(devices);
    if (!mouse)
        return false;
    for (const Bool isDown : {True, False})
        XTestFakeDeviceButtonEvent(m_display, mouse, 1, isDown, nullptr, 0, CurrentTime);
    XSync(m_display, False);
    XCloseDevice(m_display, mouse);
    return true;
}

} // namespace companion::testing
