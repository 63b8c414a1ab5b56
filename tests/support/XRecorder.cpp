#include "tests/support/XRecorder.h"

#include <X11/Xlib.h>
#include <X11/Xproto.h>

#include <X11/extensions/record.h>
#include <X11/extensions/XInput2.h>
#include <X11/extensions/XTest.h>

#include <cmath>
#include <poll.h>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace companion::testing {

namespace {

std::string wordFor(int type)
{
    switch (type) {
    case ButtonPress:
        return "press";
    case ButtonRelease:
        return "release";
    case MotionNotify:
        return "motion";
    case KeyPress:
        return "keydown";
    case KeyRelease:
        return "keyup";
    }
    return {};
}

Display* openOrThrow(const std::string& name)
{
    Display* display = XOpenDisplay(name.c_str());
    if (!display)
        throw std::runtime_error("cannot open display " + name);
    return display;
}

} // namespace

XRecorder::XRecorder(const std::string& display)
    : m_control(openOrThrow(display))
    , m_data(openOrThrow(display))
    , m_raw(openOrThrow(display))
{
    int lowest = 0;
    int highest = 0;
    XDisplayKeycodes(m_control, &lowest, &highest);
    m_markerKeycode = static_cast<unsigned>(highest);
    startRecord();
    startRaw();
}

XRecorder::~XRecorder()
{
    XRecordDisableContext(m_control, m_context);
    XSync(m_control, False); // a connection that records answers nothing else
    XCloseDisplay(m_data);
    XCloseDisplay(m_raw);
    XCloseDisplay(m_control);
}

void XRecorder::startRecord()
{
    int major = 0;
    int minor = 0;
    if (!XRecordQueryVersion(m_control, &major, &minor))
        throw std::runtime_error("no RECORD extension");
    XRecordRange* range = XRecordAllocRange();
    range->device_events.first = KeyPress;
    range->device_events.last = MotionNotify;
    XRecordClientSpec clients = XRecordAllClients;
    m_context = XRecordCreateContext(m_control, 0, &clients, 1, &range, 1);
    XFree(range);
    XSync(m_control, False);
    const auto receive = [](XPointer selfPointer, XRecordInterceptData* data) {
        auto& self = *reinterpret_cast<XRecorder*>(selfPointer);
        self.m_isReady = true;
        if (data->category == XRecordFromServer && data->data)
            self.record(data->data);
        XRecordFreeData(data);
    };
    XRecordEnableContextAsync(m_data, m_context, receive, reinterpret_cast<XPointer>(this));
    XFlush(m_data);
    while (!m_isReady)
        XRecordProcessReplies(m_data);
}

void XRecorder::startRaw()
{
    int opcode = 0;
    int event = 0;
    int error = 0;
    int major = 2;
    int minor = 2;
    if (!XQueryExtension(m_raw, "XInputExtension", &opcode, &event, &error)
        || XIQueryVersion(m_raw, &major, &minor) != Success)
        throw std::runtime_error("no X Input extension 2.2");
    unsigned char bits[XIMaskLen(XI_RawMotion)] = {};
    XISetMask(bits, XI_RawMotion);
    XIEventMask mask{XIAllMasterDevices, sizeof bits, bits};
    XISelectEvents(m_raw, DefaultRootWindow(m_raw), &mask, 1);
    XSync(m_raw, False);
}

void XRecorder::record(const unsigned char* wireEvent)
{
    const auto& event = *reinterpret_cast<const xEvent*>(wireEvent);
    const int type = event.u.u.type & 0x7f;
    const auto& common = event.u.keyButtonPointer;
    const unsigned detail = type == MotionNotify ? 0 : event.u.u.detail;
    if (type <= KeyRelease && detail == m_markerKeycode)
        ++m_markers;
    else if (!wordFor(type).empty())
        m_events.push_back({wordFor(type), detail, common.rootX, common.rootY, common.state, common.time});
}

// The record ends nowhere by itself: a key that no keyboard has is pressed and waited for. The release comes last,
// so two marks end it.
void XRecorder::readUntilMarker()
{
    m_markers = 0;
    XTestFakeKeyEvent(m_control, m_markerKeycode, True, CurrentTime);
    XTestFakeKeyEvent(m_control, m_markerKeycode, False, CurrentTime);
    XSync(m_control, False);
    XRecordProcessReplies(m_data);
    while (m_markers < 2) {
        pollfd waiting{ConnectionNumber(m_data), POLLIN, 0};
        if (poll(&waiting, 1, 5000) <= 0)
            throw std::runtime_error("the server records no more");
        XRecordProcessReplies(m_data);
    }
}

std::vector<XRecorder::Event> XRecorder::take()
{
    readUntilMarker();
    return std::exchange(m_events, {});
}

std::string XRecorder::takeText()
{
    std::ostringstream text;
    for (const Event& event : take()) {
        text << (text.tellp() > 0 ? " " : "") << event.what;
        if (event.detail)
            text << event.detail;
        text << " " << event.x << "," << event.y;
    }
    return text.str();
}

std::string XRecorder::takeRequestedMotions()
{
    XSync(m_raw, False);
    std::ostringstream text;
    while (XPending(m_raw) > 0) {
        XEvent event;
        XNextEvent(m_raw, &event);
        if (event.type != GenericEvent || !XGetEventData(m_raw, &event.xcookie))
            continue;
        const auto& raw = *static_cast<const XIRawEvent*>(event.xcookie.data);
        const double* value = raw.raw_values;
        const auto next = [&](int axis) {
            return XIMaskIsSet(raw.valuators.mask, axis) ? std::lround(*value++) : 0;
        };
        const long x = next(0);
        const long y = next(1);
        text << (text.tellp() > 0 ? " " : "") << x << "," << y;
        XFreeEventData(m_raw, &event.xcookie);
    }
    return text.str();
}

} // namespace companion::testing
