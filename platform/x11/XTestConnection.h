#pragma once

#include "platform/Log.h"
#include "platform/x11/RootPixel.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

struct xcb_connection_t;

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

    /// Where the server's errors and its loss are told from now on; before, nowhere. It must outlive the connection.
    void setLog(SystemLog& log) { m_log = &log; }

    const std::string& displayName() const { return m_displayName; }
    bool isLost() const;

    // These wait in a buffer until a call below sends them.
    void move(RootPixel to);
    void setButtonDown(unsigned button, bool isDown); ///< The physical button, whatever it is mapped to.
    void setKeyDown(unsigned keycode, bool isDown);

    void flush(); ///< Sends what waits.
    void sync();  ///< Sends what waits and waits until the server has done it.

    /// Where the pointer is once everything before is done: a round trip. Nothing when it is on no screen of ours.
    std::optional<Pointer> pointer();

    /// Where a move to `pixel` ends, which may lie off the screen: a round trip.
    RootPixel reachablePixel(RootPixel pixel);

    /// The physical button that programs see as the left one, which left-handed people swap with the right one; 1 when
    /// none is. As of the last `pointer()`.
    unsigned leftButton() const { return m_leftButton; }

    /// 0 when no key of the keyboard has that symbol: a round trip.
    unsigned keycodeOf(std::uint32_t keysym);

private:
    XTestConnection(xcb_connection_t* connection, std::string displayName);
    void post(std::uint8_t type, unsigned detail, std::uint32_t root, RootPixel at);
    void readPointerMapping();
    void handleEvents();
    void noticeLoss();
    void tell(const std::string& line);

    xcb_connection_t* const m_connection;
    const std::string m_displayName;
    SystemLog* m_log = nullptr;
    std::uint32_t m_root = 0; ///< The window that all others of the screen lie in.
    bool m_isLossTold = false;
    unsigned m_leftButton = 1;
};

} // namespace companion
