#include "cli/SystemProbes.h"

#include <cstdlib>
#include <future>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <string_view>
#include <thread>
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

/// Starts the portal if it is not running. Without a backend for it, its version is 0.
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
    const QDBusReply<QVariant> version = bus.call(message);
    QDBusConnection::disconnectFromBus(QStringLiteral("panelctl-session"));
    return version.isValid() && version.value().toUInt() > 0;
}

/// Calls on threads of their own what may block forever.
class BoundedCalls {
public:
    BoundedCalls(std::chrono::milliseconds time, bool& hasLeftThread)
        : m_time(time)
        , m_hasLeftThread(hasLeftThread)
    {
    }

    /// Nothing if `work` takes too long.
    template <typename Result> std::optional<Result> call(Result (*work)()) const
    {
        auto task = std::packaged_task<Result()>(work);
        auto result = task.get_future();
        std::thread(std::move(task)).detach();
        if (result.wait_for(m_time) == std::future_status::ready)
            return result.get();
        m_hasLeftThread = true;
        return std::nullopt;
    }

private:
    const std::chrono::milliseconds m_time;
    bool& m_hasLeftThread;
};

/// The best way that there is.
std::optional<InputWay> waylandWay(const BoundedCalls& calls)
{
    if (calls.call(hasVirtualPointer).value_or(false))
        return InputWay::virtualPointer;
    if (calls.call(hasRemoteDesktopPortal).value_or(false))
        return InputWay::portal;
    return std::nullopt;
}

} // namespace

DisplayFacts lookAtDisplays(std::chrono::milliseconds time, bool& hasLeftThread)
{
    const BoundedCalls calls(time, hasLeftThread);
    DisplayFacts facts;
    facts.display = environmentText("DISPLAY");
    facts.waylandDisplay = environmentText("WAYLAND_DISPLAY");
    if (!facts.waylandDisplay.empty())
        facts.wayland = waylandWay(calls);
    if (!facts.display.empty())
        facts.x = calls.call(lookAtXDisplay).value_or(X::silent);
    return facts;
}

} // namespace companion::cli
