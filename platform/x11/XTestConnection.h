#pragma once

#include "platform/x11/RootPixel.h"

#include <memory>
#include <optional>
#include <string>

struct _XDisplay;

namespace companion {

/// A connection to an X server that posts input events by the XTEST extension. One thread at a time.
///
/// Once the server is gone, every call does nothing; no X error ends the process.
class XTestConnection {
public:
    struct Pointer {
        RootPixel at;
        bool isLeftButtonDown = false; ///< On any pointing device.
    };

    /// An empty name stands for $DISPLAY. Nothing, and why in one line, when there is no such display, or it has
    /// no XTEST.
    static std::unique_ptr<XTestConnection> open(const std::string& displayName, std::string& whyNot);

    ~XTestConnection(); ///< Sends what is still waiting.
    XTestConnection(const XTestConnection&) = delete;
    XTestConnection& operator=(const XTestConnection&) = delete;

    std::string displayName() const;
    bool isLost() const { return m_isLost; }

    // These wait in a buffer until a call below sends them.
    void move(RootPixel to);
    void setLeftButtonDown(bool isDown);
    void setKeyDown(unsigned keycode, bool isDown);

    void flush(); ///< Sends what waits.
    void sync();  ///< Sends what waits and waits until the server has done it.

    /// Where the pointer is once everything before is done: a round trip. Nothing when it is on no screen of ours.
    std::optional<Pointer> pointer();

    /// Where a move to `pixel` ends, which may lie off the screen: a round trip.
    RootPixel reachablePixel(RootPixel pixel);

    /// 0 when no key of the keyboard has that symbol.
    unsigned keycodeOf(unsigned long keysym);

private:
    explicit XTestConnection(_XDisplay* display);
    void discardEvents();

    _XDisplay* m_display;
    int m_screen;
    bool m_isLost = false;
};

} // namespace companion
