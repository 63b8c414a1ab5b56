#pragma once

#include <string>

struct _XDisplay;

namespace companion::testing {

/// Another program of a display: windows, server grabs, and a mouse that is not XTEST's.
class XClient {
public:
    /// Throws when there is no such display.
    explicit XClient(const std::string& display);
    ~XClient(); ///< Ends a grab and closes the windows.
    XClient(const XClient&) = delete;
    XClient& operator=(const XClient&) = delete;

    /// As a window manager does while it moves a window: the server answers nobody else until `ungrabServer`.
    void grabServer();
    void ungrabServer();

    bool isLeftButtonDown();

    /// A window in front of all others, without a window manager's frame; its id.
    unsigned long openWindow(int x, int y, unsigned width, unsigned height);
    void closeWindow(unsigned long window);
    void raiseWindow(unsigned long window);

    /// Presses and releases the left button of the server's own mouse where the pointer is. False when there is none.
    bool clickWithMouse();

private:
    _XDisplay* m_display;
};

} // namespace companion::testing
