#include "platform/x11/XTestConnection.h"

#include <xcb/randr.h>
#include <xcb/xcb.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <cstdlib>
#include <span>
#include <string_view>
#include <utility>

namespace companion {

namespace {

constexpr std::uint8_t logicalLeftButton = 1;

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// What libxcb gives away; null when the connection is lost, or there was an error.
template <typename T> std::unique_ptr<T, Free> owned(T* memory)
{
    return std::unique_ptr<T, Free>(memory);
}

std::string resolvedName(const std::string& displayName)
{
    if (!displayName.empty())
        return displayName;
    const char* const fromEnvironment = std::getenv("DISPLAY");
    return fromEnvironment ? fromEnvironment : "";
}

xcb_window_t rootOfScreen(xcb_connection_t* connection, int number)
{
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    for (; number > 0 && screens.rem > 1; --number)
        xcb_screen_next(&screens);
    return screens.data->root;
}

} // namespace

std::unique_ptr<XTestConnection> XTestConnection::open(const std::string& displayName, std::string& whyNot)
{
    const std::string name = resolvedName(displayName);
    int screen = 0;
    std::unique_ptr<XTestConnection> connection(
        new XTestConnection(xcb_connect(name.c_str(), &screen), name));
    if (xcb_connection_has_error(connection->m_connection) != 0) {
        connection->m_isLossLogged = true;
        whyNot = "Cannot open the X display \"" + name + "\"";
        return nullptr;
    }
    const xcb_query_extension_reply_t* const xtest =
        xcb_get_extension_data(connection->m_connection, &xcb_test_id);
    if (!xtest || !xtest->present) {
        whyNot = "The X display \"" + name + "\" has no XTEST extension";
        return nullptr;
    }
    connection->m_root = rootOfScreen(connection->m_connection, screen);
    xcb_test_grab_control(connection->m_connection, /*impervious=*/1);
    connection->readPointerMapping();
    connection->watchPresses();
    return connection;
}

XTestConnection::XTestConnection(xcb_connection_t* connection, std::string displayName)
    : m_connection(connection)
    , m_displayName(std::move(displayName))
{
}

XTestConnection::~XTestConnection()
{
    flush();
    xcb_disconnect(m_connection);
}

bool XTestConnection::isLost() const
{
    return xcb_connection_has_error(m_connection) != 0;
}

void XTestConnection::move(RootPixel to)
{
    post(XCB_MOTION_NOTIFY, 0, m_root, to);
}

void XTestConnection::setButtonDown(unsigned button, bool isDown)
{
    post(isDown ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, button, XCB_NONE, {});
    if (isDown && m_inputExtension == 0)
        m_presses.push_back({std::chrono::duration_cast<std::chrono::milliseconds>(
                                 std::chrono::steady_clock::now().time_since_epoch()),
            /*isByXTest=*/true});
}

void XTestConnection::setKeyDown(unsigned keycode, bool isDown)
{
    post(isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode, XCB_NONE, {});
}

void XTestConnection::post(std::uint8_t type, unsigned detail, std::uint32_t root, RootPixel at)
{
    xcb_test_fake_input(m_connection, type, static_cast<std::uint8_t>(detail), XCB_CURRENT_TIME, root,
        static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y), /*deviceid=*/0);
}

void XTestConnection::flush()
{
    xcb_flush(m_connection);
    noticeLoss();
}

void XTestConnection::sync()
{
    owned(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    noticeLoss();
}

std::optional<XTestConnection::Surroundings> XTestConnection::lookAt(RootPixel target)
{
    // All are sent before the first reply is read. The root window grows and shrinks with the monitors.
    const auto pointerCookie = xcb_query_pointer(m_connection, m_root);
    const auto geometryCookie = xcb_get_geometry(m_connection, m_root);
    const auto windowCookie = xcb_translate_coordinates(m_connection, m_root, m_root,
        static_cast<std::int16_t>(target.x), static_cast<std::int16_t>(target.y));
    const auto pointer = owned(xcb_query_pointer_reply(m_connection, pointerCookie, nullptr));
    const auto geometry = owned(xcb_get_geometry_reply(m_connection, geometryCookie, nullptr));
    const auto window = owned(xcb_translate_coordinates_reply(m_connection, windowCookie, nullptr));
    handleEvents();
    noticeLoss();
    if (!pointer || !pointer->same_screen || !geometry)
        return std::nullopt;
    return Surroundings{{pointer->root_x, pointer->root_y}, (pointer->mask & XCB_BUTTON_MASK_1) != 0,
        clampedTo(target, geometry->width, geometry->height), window ? window->child : 0};
}

std::vector<RootArea> XTestConnection::monitors()
{
    const xcb_query_extension_reply_t* const randr = xcb_get_extension_data(m_connection, &xcb_randr_id);
    if (!randr || !randr->present) // a request to an extension that is missing would end the connection
        return {};
    const auto reply = owned(xcb_randr_get_monitors_reply(
        m_connection, xcb_randr_get_monitors(m_connection, m_root, /*get_active=*/1), nullptr));
    if (!reply)
        return {};
    std::vector<RootArea> monitors;
    for (auto monitor = xcb_randr_get_monitors_monitors_iterator(reply.get()); monitor.rem > 0;
         xcb_randr_monitor_info_next(&monitor))
        monitors.push_back({monitor.data->x, monitor.data->y, monitor.data->width, monitor.data->height});
    return monitors;
}

unsigned XTestConnection::keycodeOf(std::uint32_t keysym)
{
    const xcb_setup_t* const setup = xcb_get_setup(m_connection);
    if (!setup)
        return 0;
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const auto mapping = owned(xcb_get_keyboard_mapping_reply(
        m_connection, xcb_get_keyboard_mapping(m_connection, setup->min_keycode, count), nullptr));
    if (!mapping || mapping->keysyms_per_keycode == 0)
        return 0;
    const std::span keysyms(xcb_get_keyboard_mapping_keysyms(mapping.get()),
        static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(mapping.get())));
    // Several for each key, one for each state of Shift and the like: what a key is without them counts first.
    const std::size_t columns = mapping->keysyms_per_keycode;
    for (std::size_t column = 0; column < columns; ++column) {
        for (std::size_t key = 0; key * columns + column < keysyms.size(); ++key) {
            if (keysyms[key * columns + column] == keysym)
                return setup->min_keycode + static_cast<unsigned>(key);
        }
    }
    return 0;
}

// XTEST's buttons are those of the device: the server maps them as it does a real mouse's.
void XTestConnection::readPointerMapping()
{
    const auto reply =
        owned(xcb_get_pointer_mapping_reply(m_connection, xcb_get_pointer_mapping(m_connection), nullptr));
    if (!reply)
        return;
    const std::span mapping(xcb_get_pointer_mapping_map(reply.get()),
        static_cast<std::size_t>(xcb_get_pointer_mapping_map_length(reply.get())));
    const auto left = std::find(mapping.begin(), mapping.end(), logicalLeftButton);
    m_leftButton = left == mapping.end() ? 1 : static_cast<unsigned>(left - mapping.begin()) + 1;
}

// Raw events come from every device whatever window the pointer is in. Without X Input 2.2 none do.
void XTestConnection::watchPresses()
{
    const xcb_query_extension_reply_t* const input = xcb_get_extension_data(m_connection, &xcb_input_id);
    if (!input || !input->present)
        return;
    const auto version = owned(xcb_input_xi_query_version_reply(
        m_connection, xcb_input_xi_query_version(m_connection, 2, 2), nullptr));
    if (!version || version->major_version < 2)
        return;
    const auto devices = owned(xcb_input_xi_query_device_reply(
        m_connection, xcb_input_xi_query_device(m_connection, XCB_INPUT_DEVICE_ALL), nullptr));
    if (!devices)
        return;
    for (auto device = xcb_input_xi_query_device_infos_iterator(devices.get()); device.rem > 0;
         xcb_input_xi_device_info_next(&device)) {
        const std::string_view name(xcb_input_xi_device_info_name(device.data), device.data->name_len);
        if (name == "Virtual core XTEST pointer")
            m_xtestPointer = device.data->deviceid;
    }
    const struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        std::uint32_t events = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    } mask;
    xcb_input_xi_select_events(m_connection, m_root, 1, &mask.head);
    m_inputExtension = input->major_opcode;
}

// They would pile up: every client is sent changes of the keyboard and button mappings, asked for or not.
void XTestConnection::handleEvents()
{
    while (const auto event = owned(xcb_poll_for_queued_event(m_connection))) {
        constexpr unsigned sentByAnotherClient = 0x80;
        const unsigned type = event->response_type & ~sentByAnotherClient;
        if (type == 0)
            handleError(event.get());
        else if (type == XCB_GE_GENERIC)
            handleGenericEvent(event.get());
        else if (type == XCB_MAPPING_NOTIFY
            && reinterpret_cast<const xcb_mapping_notify_event_t*>(event.get())->request
                == XCB_MAPPING_POINTER)
            readPointerMapping();
    }
}

void XTestConnection::handleError(const void* error)
{
    const auto& what = *static_cast<const xcb_generic_error_t*>(error);
    log("X error " + std::to_string(what.error_code) + " ignored (request " + std::to_string(what.major_code)
        + "." + std::to_string(what.minor_code) + ")");
}

void XTestConnection::handleGenericEvent(const void* event)
{
    const auto& raw = *static_cast<const xcb_input_raw_button_press_event_t*>(event);
    if (raw.extension == m_inputExtension && raw.event_type == XCB_INPUT_RAW_BUTTON_PRESS)
        m_presses.push_back({std::chrono::milliseconds(raw.time), raw.sourceid == m_xtestPointer});
}

void XTestConnection::noticeLoss()
{
    if (isLost() && !std::exchange(m_isLossLogged, true))
        log("The connection to the X display \"" + m_displayName
            + "\" is lost: touches move nothing any more");
}

void XTestConnection::log(const std::string& line)
{
    if (m_log)
        m_log->log(line);
}

} // namespace companion
