#include "platform/wayland/VirtualPointerConnection.h"

#include "platform/wayland/CompositorSocket.h"
#include "virtual-pointer-protocol-client.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <linux/input-event-codes.h>
#include <poll.h>
#include <QSocketNotifier>
#include <string_view>
#include <utility>
#include <wayland-client-core.h>
#include <wayland-client-protocol.h>

namespace companion {

namespace {

constexpr std::size_t mostWaitingEvents = 65536;
constexpr std::uint32_t neededManagerVersion = 2; // from there on a pointer belongs to an output
constexpr std::uint32_t newestOutputVersion = 4;  // from there on an output has a name

// The library's buffer holds this much. A request that finds it full ends the connection, so it is kept from filling.
constexpr std::size_t bufferSize = 4096;
constexpr std::size_t bytesForOtherRequests = 512;
constexpr std::size_t largestEvent = 36; // a motion and its frame

std::uint32_t monotonicMilliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

} // namespace

/// What the compositor calls.
struct VirtualPointerConnection::Callbacks {
    static VirtualPointerConnection& self(void* data)
    {
        return *static_cast<VirtualPointerConnection*>(data);
    }

    static void global(
        void* data, wl_registry* registry, std::uint32_t number, const char* interface, std::uint32_t version)
    {
        VirtualPointerConnection& connection = self(data);
        const std::string_view name = interface;
        if (name == zwlr_virtual_pointer_manager_v1_interface.name && version >= neededManagerVersion) {
            connection.m_manager = static_cast<zwlr_virtual_pointer_manager_v1*>(wl_registry_bind(
                registry, number, &zwlr_virtual_pointer_manager_v1_interface, neededManagerVersion));
        } else if (name == wl_output_interface.name) {
            auto* const proxy = static_cast<wl_output*>(wl_registry_bind(
                registry, number, &wl_output_interface, std::min(version, newestOutputVersion)));
            connection.m_outputs.push_back({number, proxy, {}});
            wl_output_add_listener(proxy, &outputListener, &connection);
        }
    }

    static void globalRemove(void* data, wl_registry*, std::uint32_t number)
    {
        self(data).removeOutput(number);
    }

    static void outputName(void* data, wl_output* output, const char* name)
    {
        for (Output& each : self(data).m_outputs) {
            if (each.proxy == output)
                each.name = name;
        }
    }

    static void outputDone(void* data, wl_output*)
    {
        if (self(data).m_isReady)
            self(data).placePointer();
    }

    static void outputGeometry(void*, wl_output*, int, int, int, int, int, const char*, const char*, int) { }
    static void outputMode(void*, wl_output*, std::uint32_t, int, int, int) { }
    static void outputScale(void*, wl_output*, int) { }
    static void outputDescription(void*, wl_output*, const char*) { }

    static void done(void* data, wl_callback* callback, std::uint32_t)
    {
        wl_callback_destroy(callback);
        self(data).m_done = nullptr;
        self(data).advance();
    }

    static constexpr wl_registry_listener registryListener{global, globalRemove};
    static constexpr wl_output_listener outputListener{
        outputGeometry, outputMode, outputDone, outputScale, outputName, outputDescription};
    static constexpr wl_callback_listener doneListener{done};
};

std::unique_ptr<VirtualPointerConnection> VirtualPointerConnection::open(
    const std::string& socketPath, std::string& whyNot)
{
    const std::string path = socketPath.empty() ? sessionSocketPath() : socketPath;
    const int fd = connectToCompositor(path);
    wl_display* const display = fd < 0 ? nullptr : wl_display_connect_to_fd(fd); // which owns it from now on
    if (!display) {
        whyNot = "Cannot connect to a Wayland compositor at \"" + path + "\"";
        return nullptr;
    }
    std::unique_ptr<VirtualPointerConnection> connection(new VirtualPointerConnection(display));
    connection->begin();
    return connection;
}

VirtualPointerConnection::VirtualPointerConnection(wl_display* display)
    : m_display(display)
{
}

VirtualPointerConnection::~VirtualPointerConnection()
{
    sendBuffer();
    // Before the socket is closed, of which they would go on waiting for news.
    m_readable.reset();
    m_writable.reset();
    dropPointer();
    for (const Output& output : m_outputs)
        release(output.proxy);
    if (m_done)
        wl_callback_destroy(m_done);
    if (m_manager)
        zwlr_virtual_pointer_manager_v1_destroy(m_manager);
    if (m_registry)
        wl_registry_destroy(m_registry);
    wl_display_disconnect(m_display);
}

void VirtualPointerConnection::begin()
{
    m_registry = wl_display_get_registry(m_display);
    wl_registry_add_listener(m_registry, &Callbacks::registryListener, this);
    askForDone();
    sendBuffer();
}

void VirtualPointerConnection::askForDone()
{
    if (m_done)
        wl_callback_destroy(m_done);
    m_done = wl_display_sync(m_display);
    wl_callback_add_listener(m_done, &Callbacks::doneListener, this);
}

// The globals come first; what is said about the outputs among them comes once they are bound.
void VirtualPointerConnection::advance()
{
    if (m_isReady)
        return;
    if (!std::exchange(m_knowsGlobals, true)) {
        askForDone();
    } else if (m_manager) {
        m_isReady = true;
        placePointer();
    } else {
        lose("it offers no virtual pointer");
    }
}

bool VirtualPointerConnection::waitUntilReady(std::chrono::milliseconds longest, std::string& whyNot)
{
    if (waitUntil([this] { return m_isReady; }, longest))
        return true;
    whyNot = m_knowsGlobals && !m_manager ? "The Wayland compositor offers no virtual pointer"
                                          : "The Wayland compositor does not answer";
    return false;
}

void VirtualPointerConnection::watchFromEventLoop()
{
    const int fd = wl_display_get_fd(m_display);
    m_readable = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Read);
    QObject::connect(m_readable.get(), &QSocketNotifier::activated, m_readable.get(), [this] {
        receive();
        flush();
    });
    m_writable = std::make_unique<QSocketNotifier>(fd, QSocketNotifier::Write);
    QObject::connect(m_writable.get(), &QSocketNotifier::activated, m_writable.get(), [this] { flush(); });
    flush();
}

void VirtualPointerConnection::selectOutput(const std::string& name)
{
    m_outputName = name;
    if (isReady())
        placePointer();
}

const VirtualPointerConnection::Output* VirtualPointerConnection::selectedOutput() const
{
    const auto named = std::find_if(m_outputs.begin(), m_outputs.end(),
        [this](const Output& output) { return output.name == m_outputName; });
    if (named != m_outputs.end())
        return &*named;
    return m_outputs.empty() ? nullptr : &m_outputs.front();
}

// Made before the first touch: a seat without any other pointer first has to tell programs that it has one.
void VirtualPointerConnection::placePointer()
{
    const Output* const output = selectedOutput();
    wl_output* const proxy = output ? output->proxy : nullptr;
    if (m_pointer && m_pointerOutput == proxy)
        return;
    dropPointer();
    m_pointerOutput = proxy;
    m_pointer = zwlr_virtual_pointer_manager_v1_create_virtual_pointer_with_output(
        m_manager, /*seat=*/nullptr, proxy);
}

void VirtualPointerConnection::dropPointer()
{
    if (m_pointer)
        zwlr_virtual_pointer_v1_destroy(std::exchange(m_pointer, nullptr));
}

void VirtualPointerConnection::removeOutput(std::uint32_t number)
{
    const auto output = std::find_if(
        m_outputs.begin(), m_outputs.end(), [number](const Output& each) { return each.number == number; });
    if (output == m_outputs.end())
        return;
    wl_output* const proxy = output->proxy;
    m_outputs.erase(output);
    if (m_isReady && m_pointerOutput == proxy)
        placePointer();
    release(proxy);
}

void VirtualPointerConnection::release(wl_output* output)
{
    if (wl_output_get_version(output) >= WL_OUTPUT_RELEASE_SINCE_VERSION)
        wl_output_release(output);
    else
        wl_output_destroy(output);
}

void VirtualPointerConnection::move(const OutputPosition& to)
{
    add(Event::Type::motion, to);
}

void VirtualPointerConnection::setLeftButtonDown(bool isDown)
{
    add(isDown ? Event::Type::press : Event::Type::release, {});
}

void VirtualPointerConnection::add(Event::Type type, const OutputPosition& at)
{
    if (isLost())
        return;
    const Event event{type, monotonicMilliseconds(), at};
    if (m_waiting.empty() && hasRoom())
        send(event);
    else if (m_waiting.size() < mostWaitingEvents)
        m_waiting.push_back(event);
    else
        lose("it does not read any more");
}

void VirtualPointerConnection::send(const Event& event)
{
    if (event.type == Event::Type::motion)
        zwlr_virtual_pointer_v1_motion_absolute(
            m_pointer, event.time, event.at.x, event.at.y, event.at.width, event.at.height);
    else
        zwlr_virtual_pointer_v1_button(m_pointer, event.time, BTN_LEFT,
            event.type == Event::Type::press ? WL_POINTER_BUTTON_STATE_PRESSED
                                             : WL_POINTER_BUTTON_STATE_RELEASED);
    zwlr_virtual_pointer_v1_frame(m_pointer);
    m_bufferedBytes += largestEvent;
}

bool VirtualPointerConnection::hasRoom()
{
    if (!isReady())
        return false;
    return m_bufferedBytes + largestEvent + bytesForOtherRequests <= bufferSize || sendBuffer();
}

// How much went out of a buffer that did not go out whole is not known, so it then counts as full.
bool VirtualPointerConnection::sendBuffer()
{
    if (isLost())
        return false;
    m_isBlocked = wl_display_flush(m_display) < 0 && errno == EAGAIN;
    if (!m_isBlocked)
        m_bufferedBytes = 0;
    noticeError();
    return !m_isBlocked && !isLost();
}

void VirtualPointerConnection::sendWaiting()
{
    while (!m_waiting.empty() && hasRoom()) {
        send(m_waiting.front());
        m_waiting.pop_front();
    }
}

void VirtualPointerConnection::flush()
{
    sendWaiting();
    sendBuffer();
    if (m_writable)
        m_writable->setEnabled(m_isBlocked);
}

void VirtualPointerConnection::receive()
{
    if (isLost())
        return;
    while (wl_display_prepare_read(m_display) != 0)
        wl_display_dispatch_pending(m_display);
    wl_display_read_events(m_display); // what is there; it waits for nothing
    wl_display_dispatch_pending(m_display);
    noticeError();
}

bool VirtualPointerConnection::sync(std::chrono::milliseconds longest)
{
    if (!waitUntil([this] { return m_isReady && m_waiting.empty(); }, longest))
        return false;
    askForDone();
    return waitUntil([this] { return !m_done; }, longest);
}

bool VirtualPointerConnection::waitUntil(
    const std::function<bool()>& isDone, std::chrono::milliseconds longest)
{
    const auto deadline = std::chrono::steady_clock::now() + longest;
    while (!isDone() && !isLost()) {
        flush();
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return false;
        pollfd socket{
            wl_display_get_fd(m_display), static_cast<short>(m_isBlocked ? POLLIN | POLLOUT : POLLIN), 0};
        poll(&socket, 1, static_cast<int>(left.count()));
        receive();
    }
    return isDone() && !isLost();
}

void VirtualPointerConnection::noticeError()
{
    if (const int error = wl_display_get_error(m_display); error != 0)
        lose(std::strerror(error));
}

void VirtualPointerConnection::lose(const std::string& reason)
{
    if (std::exchange(m_isLost, true))
        return;
    m_waiting.clear();
    if (m_readable)
        m_readable->setEnabled(false);
    if (m_writable)
        m_writable->setEnabled(false);
    if (m_log)
        m_log->log("The connection to the Wayland compositor is lost (" + reason
            + "): touches move nothing any more");
}

} // namespace companion
