#pragma once

#include "platform/Log.h"
#include "platform/wayland/OutputPosition.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>

class QSocketNotifier;
struct wl_callback;
struct wl_display;
struct wl_output;
struct wl_registry;
struct zwlr_virtual_pointer_manager_v1;
struct zwlr_virtual_pointer_v1;

namespace companion {

/// A virtual pointer of a Wayland compositor, on a connection of its own (wlr-virtual-pointer-unstable-v1, version 2).
/// One thread at a time.
///
/// Only `waitUntilReady` and `sync` wait for the compositor. What it does not take yet waits here, in order; one that
/// has left 65,536 events unread is given up. Once the connection is lost, every call does nothing.
class VirtualPointerConnection {
public:
    /// Begins to connect. Nothing, and why in one line, when no compositor listens at that socket; an empty path stands
    /// for the session's ($WAYLAND_DISPLAY).
    static std::unique_ptr<VirtualPointerConnection> open(const std::string& socketPath, std::string& whyNot);

    ~VirtualPointerConnection(); ///< The compositor drops what it has not read by then.
    VirtualPointerConnection(const VirtualPointerConnection&) = delete;
    VirtualPointerConnection& operator=(const VirtualPointerConnection&) = delete;

    /// Whether the compositor has offered a virtual pointer within that time; otherwise why not, in one line.
    bool waitUntilReady(std::chrono::milliseconds longest, std::string& whyNot);

    /// From now on the thread's event loop receives, and sends what waits.
    void watchFromEventLoop();

    /// Receives its loss from now on. It must outlive the connection.
    void setLog(SystemLog& log) { m_log = &log; }

    bool isReady() const { return m_isReady && !isLost(); }
    bool isLost() const { return m_isLost; }

    /// Where positions count from now on: the output of that name, also when it appears later; meanwhile the first one.
    void selectOutput(const std::string& name);

    // These wait in a buffer until `flush`.
    void move(const OutputPosition& to);
    void setLeftButtonDown(bool isDown);

    void flush(); ///< Sends what the compositor takes now; the event loop sends the rest.

    /// Whether the compositor has processed everything before within that time.
    bool sync(std::chrono::milliseconds longest);

private:
    struct Callbacks;

    struct Output {
        std::uint32_t number = 0; ///< The registry's.
        wl_output* proxy = nullptr;
        std::string name; ///< Empty until it is announced, and for good by a compositor that announces none.
    };

    /// A motion, or a press or release of the left button.
    struct Event {
        enum class Type { motion, press, release } type = Type::motion;
        std::uint32_t time =
            0; ///< In milliseconds of the monotonic clock, as the compositor's own devices count them.
        OutputPosition at;
    };

    explicit VirtualPointerConnection(wl_display* display);

    void begin();
    void askForDone();
    void advance();
    void placePointer();
    void dropPointer();
    const Output* selectedOutput() const;
    void removeOutput(std::uint32_t number);
    static void release(wl_output* output);

    void add(Event::Type type, const OutputPosition& at);
    void send(const Event& event);
    bool hasRoom();
    bool sendBuffer();
    void sendWaiting();
    void receive();
    bool waitUntil(const std::function<bool()>& isDone, std::chrono::milliseconds longest);
    void noticeError();
    void lose(const std::string& reason);

    wl_display* m_display;
    SystemLog* m_log = nullptr;
    wl_registry* m_registry = nullptr;
    wl_callback* m_done = nullptr; ///< Answered once the compositor has processed what was requested before.
    zwlr_virtual_pointer_manager_v1* m_manager = nullptr;
    zwlr_virtual_pointer_v1* m_pointer = nullptr;
    std::list<Output> m_outputs; ///< A list, since the compositor's callbacks point at its elements.
    std::string m_outputName;
    wl_output* m_pointerOutput = nullptr; ///< The one that the pointer was made for.
    std::deque<Event> m_waiting;
    std::size_t m_bufferedBytes = 0; ///< Requested since the library's buffer was last known to be empty.
    bool m_isBlocked = false;        ///< The socket takes no more for now.
    bool m_knowsGlobals = false;
    bool m_isReady = false;
    bool m_isLost = false;
    std::unique_ptr<QSocketNotifier> m_readable;
    std::unique_ptr<QSocketNotifier> m_writable;
};

} // namespace companion
