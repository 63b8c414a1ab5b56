#pragma once

#include "platform/Log.h"
#include "platform/x11/RootPixel.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

struct xcb_connection_t;

namespace companion {

/// A connection to an X server that posts input events by the XTEST extension. One thread at a time.
///
/// Once the server is gone, every call does nothing; no X error ends the process.
class XTestConnection {
public:
    /// The pointer, and what a pixel stands for, at one moment.
    struct Surroundings {
        RootPixel pointer;
        bool isLeftButtonDown = false; ///< On any pointing device.
        RootPixel target;              ///< The pixel asked for, moved onto the root window.
        std::uint32_t window = 0;      ///< The top-level window below it; 0 for the bare root window.
    };

    /// A press of a mouse button, as programs are told of it.
    struct SeenPress {
        std::chrono::milliseconds time; ///< By the server's clock.
        bool isByXTest = false;         ///< And not by another device, such as a real mouse.
    };

    /// An empty name stands for $DISPLAY. Nothing, and why in one line, when there is no such display, or it has
    /// no XTEST. The connection is exempt from server grabs: a window manager that grabs the server until the
    /// button is up would otherwise wait for a release that waits for the grab's end.
    static std::unique_ptr<XTestConnection> open(const std::string& displayName, std::string& whyNot);

    ~XTestConnection(); ///< Sends what is still waiting.
    XTestConnection(const XTestConnection&) = delete;
    XTestConnection& operator=(const XTestConnection&) = delete;

    /// Receives the server's errors and its loss from now on. It must outlive the connection.
    void setLog(SystemLog& log) { m_log = &log; }

    const std::string& displayName() const { return m_displayName; }
    bool isLost() const;

    // These wait in a buffer until a call below sends them.
    void move(RootPixel to);
    void setButtonDown(unsigned button, bool isDown); ///< The physical button, whatever it is mapped to.
    void setKeyDown(unsigned keycode, bool isDown);

    void flush(); ///< Sends what waits.
    void sync();  ///< Sends what waits and waits until the server has done it.

    /// Once everything before is done; `target` may lie off the screen. One round trip. Nothing when the pointer is
    /// on another X screen, or the server is gone.
    std::optional<Surroundings> lookAt(RootPixel target);

    /// What there is of the screen to see, by RandR 1.5: a round trip. Empty where the server has none.
    std::vector<RootArea> monitors();

    /// The physical button that programs see as the left one, which left-handed people swap with the right one; 1 when
    /// none is. As of the last `lookAt`.
    unsigned leftButton() const { return m_leftButton; }

    /// Those up to the last `lookAt`, this connection's own included, oldest first; each is told of once. Where the
    /// server has no X Input 2, they are this connection's own, by our clock.
    std::vector<SeenPress> takePresses() { return std::exchange(m_presses, {}); }

    /// 0 when no key of the keyboard has that symbol: a round trip.
    unsigned keycodeOf(std::uint32_t keysym);

private:
    XTestConnection(xcb_connection_t* connection, std::string displayName);
    void post(std::uint8_t type, unsigned detail, std::uint32_t root, RootPixel at);
    void readPointerMapping();
    void watchPresses();
    void handleEvents();
    void handleError(const void* error);
    void handleGenericEvent(const void* event);
    void noticeLoss();
    void log(const std::string& line);

    xcb_connection_t* const m_connection;
    const std::string m_displayName;
    SystemLog* m_log = nullptr;
    std::uint32_t m_root = 0; ///< The window that all others of the screen lie in.
    bool m_isLossLogged = false;
    unsigned m_leftButton = 1;
    std::uint8_t m_inputExtension = 0; ///< X Input's major opcode; 0 when the server has none.
    std::uint16_t m_xtestPointer = 0;  ///< The device that XTEST's button events come from.
    std::vector<SeenPress> m_presses;
};

} // namespace companion
