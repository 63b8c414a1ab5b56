#include "cli/SystemProbes.h"

#include <cstdlib>
#include <QDBusConnection>
#include <QDBusMessage>
#include <string_view>
#include <unistd.h>
#include <wayland-client.h>
#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace companion::cli {

namespace {

using X = DisplayFacts::X;

std::string environmentText(const char* name)
{
    const char* value = std::getenv(name);
    return value ? value : "";
}

X lookAtXDisplay()
{
    xcb_connection_t* const connection = xcb_connect(nullptr, nullptr);
    X found = X::cannotOpen;
    if (xcb_connection_has_error(connection) == 0) {
        const xcb_query_extension_reply_t* const xtest = xcb_get_extension_data(connection, &xcb_test_id);
        found = xtest && xtest->present ? X::usable : X::noXTest;
    }
    xcb_disconnect(connection);
    return found;
}

void takeGlobal(void* hasVirtualPointer, wl_registry*, std::uint32_t, const char* interface, std::uint32_t)
{
    if (std::string_view(interface) == "zwlr_virtual_pointer_manager_v1")
        *static_cast<bool*>(hasVirtualPointer) = true;
}

bool hasVirtualPointer()
{
    wl_display* const display = wl_display_connect(nullptr);
    if (!display)
        return false;
    static constexpr wl_registry_listener listener{takeGlobal, [](void*, wl_registry*, std::uint32_t) {}};
    bool found = false;
    wl_registry* const registry = wl_display_get_registry(display);
    wl_registry_add_listener(registry, &listener, &found);
    wl_display_roundtrip(display);
    wl_registry_destroy(registry);
    wl_display_disconnect(display);
    return found;
}

/// Without an address libdbus would start a bus of its own where there is an X display.
bool hasSessionBus()
{
    return std::getenv("DBUS_SESSION_BUS_ADDRESS")
        || access((environmentText("XDG_RUNTIME_DIR") + "/bus").c_str(), F_OK) == 0;
}

/// Starts the portal if it is not running.
bool hasRemoteDesktopPortal()
{
    if (!hasSessionBus())
        return false;
    const QDBusConnection bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("panelctl-session"));
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"), QStringLiteral("org.freedesktop.DBus.Properties"),
        QStringLiteral("Get"));
    message << QStringLiteral("org.freedesktop.portal.RemoteDesktop") << QStringLiteral("version");
    const bool isThere = bus.isConnected() && bus.call(message).type() == QDBusMessage::ReplyMessage;
    QDBusConnection::disconnectFromBus(QStringLiteral("panelctl-session"));
    return isThere;
}

/// The best way that there is.
std::optional<InputWay> waylandWay(std::chrono::milliseconds time, BoundedCalls& calls)
{
    if (calls.call(time, hasVirtualPointer).value_or(false))
        return InputWay::virtualPointer;
    if (calls.call(time, hasRemoteDesktopPortal).value_or(false))
        return InputWay::portal;
    return std::nullopt;
}

} // namespace

DisplayFacts DesktopDisplayProbe::look(std::chrono::milliseconds time)
{
    DisplayFacts facts;
    facts.display = environmentText("DISPLAY");
    facts.waylandDisplay = environmentText("WAYLAND_DISPLAY");
    if (!facts.waylandDisplay.empty())
        facts.wayland = waylandWay(time, m_calls);
    if (!facts.display.empty())
        facts.x = m_calls.call(time, lookAtXDisplay).value_or(X::silent);
    return facts;
}

} // namespace companion::cli
