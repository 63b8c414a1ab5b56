#include "bench/start/PaintWatcher.h"

#include <cstring>
#include <stdexcept>
#include <thread>

#include <X11/Xlib.h>
#include <X11/Xproto.h>

#include <X11/extensions/record.h>

namespace companion::bench {

namespace {

constexpr std::chrono::milliseconds lookInterval{25};

// The X Protocol's manual, appendix B, and the one of MIT-SHM.
constexpr int sharedMemoryPutImage = 3;
constexpr std::size_t drawableOffset = 4;
constexpr std::size_t copyDestinationOffset = 8;

unsigned wordAt(const unsigned char* request, std::size_t offset)
{
    unsigned word = 0;
    std::memcpy(&word, request + offset, sizeof word);
    return word;
}

/// The server's milliseconds are the low 32 bits of those of the monotonic clock.
PaintWatcher::TimePoint timePointOf(unsigned serverTime)
{
    const auto now = std::chrono::steady_clock::now();
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(now.time_since_epoch()).count();
    return now - std::chrono::milliseconds(static_cast<unsigned>(milliseconds) - serverTime);
}

void receive(XPointer self, XRecordInterceptData* data)
{
    if (data->category == XRecordFromClient && data->data)
        reinterpret_cast<PaintWatcher*>(self)->noteRequest(
            data->data, data->data_len * 4, static_cast<unsigned>(data->server_time));
    XRecordFreeData(data);
}

} // namespace

PaintWatcher::PaintWatcher(const std::string& display)
    : m_control(XOpenDisplay(display.c_str()))
    , m_data(XOpenDisplay(display.c_str()))
{
    if (!m_control || !m_data)
        throw std::runtime_error("cannot open display " + display);
    int event = 0;
    int error = 0;
    XQueryExtension(m_control, "MIT-SHM", &m_sharedMemoryOpcode, &event, &error);
    record();
}

PaintWatcher::~PaintWatcher()
{
    XRecordDisableContext(m_control, m_context); // the data connection answers nothing else before
    XSync(m_control, False);
    XRecordProcessReplies(m_data);
    XRecordFreeContext(m_control, m_context);
    XCloseDisplay(m_data);
    XCloseDisplay(m_control);
}

void PaintWatcher::record()
{
    XRecordRange* range = XRecordAllocRange();
    if (!range)
        throw std::runtime_error("out of memory");
    range->core_requests = {X_MapWindow, X_PutImage};
    range->ext_requests.ext_major = {
        static_cast<unsigned char>(m_sharedMemoryOpcode), static_cast<unsigned char>(m_sharedMemoryOpcode)};
    range->ext_requests.ext_minor = {sharedMemoryPutImage, sharedMemoryPutImage};
    XRecordClientSpec clients = XRecordFutureClients;
    m_context = XRecordCreateContext(m_control, XRecordFromClientTime, &clients, 1, &range, 1);
    XFree(range);
    XSync(m_control, False);
    if (!m_context
        || !XRecordEnableContextAsync(m_data, m_context, receive, reinterpret_cast<XPointer>(this)))
        throw std::runtime_error("the display has no RECORD extension");
    XSync(m_control, False);
}

void PaintWatcher::noteRequest(const unsigned char* request, std::size_t size, unsigned serverTime)
{
    const bool isSharedMemory = request[0] == m_sharedMemoryOpcode;
    if (request[0] == X_MapWindow)
        m_mapped.insert(wordAt(request, drawableOffset));
    else if (size >= 12 && (request[0] == X_PutImage || isSharedMemory || request[0] == X_CopyArea)) {
        const auto offset = request[0] == X_CopyArea ? copyDestinationOffset : drawableOffset;
        if (!m_firstPaint && m_mapped.contains(wordAt(request, offset)))
            m_firstPaint = timePointOf(serverTime);
    }
}

std::optional<PaintWatcher::TimePoint> PaintWatcher::firstPaint(TimePoint deadline)
{
    while (!m_firstPaint && std::chrono::steady_clock::now() < deadline) {
        // The server holds back what it has recorded until it has something else to tell to anybody.
        std::this_thread::sleep_for(lookInterval);
        XSync(m_control, False);
        XRecordProcessReplies(m_data);
    }
    return m_firstPaint;
}

} // namespace companion::bench
