#include "cli/WaylandFacts.h"

#include <array>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <QDBusConnection>
#include <QDBusMessage>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion::cli {

namespace {

// The wire format is in "The Wayland Protocol", chapter 4: an object, then size and opcode in one word. Two requests are
// all that is needed, so that panelctl starts without libwayland.
constexpr std::uint32_t display = 1;
constexpr std::uint32_t registry = 2;
constexpr std::uint32_t callback = 3;
constexpr std::array<std::uint32_t, 6> getRegistryAndSync{
    display, 12U << 16 | 1, registry, display, 12U << 16 | 0, callback};
constexpr char wantedInterface[] = "zwlr_virtual_pointer_manager_v1";

std::string socketPath(const std::string& waylandDisplay)
{
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    const bool isPath = !waylandDisplay.empty() && waylandDisplay.front() == '/';
    return isPath ? waylandDisplay : std::string(folder ? folder : "") + "/" + waylandDisplay;
}

bool connectTo(int fd, const std::string& path, std::chrono::milliseconds time)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        return false;
    std::memcpy(address.sun_path, path.data(), path.size());
    const timeval longest{time.count() / 1000, time.count() % 1000 * 1000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &longest, sizeof longest);
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &longest, sizeof longest);
    return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

/// The globals come before the answer to the sync; whatever breaks off has none of that name.
bool readsWantedGlobal(int fd)
{
    std::array<std::uint32_t, 2> head{};
    while (recv(fd, head.data(), sizeof head, MSG_WAITALL) == sizeof head && head[0] == registry) {
        std::array<char, 65536> body{};
        const std::size_t size = (head[1] >> 16) - sizeof head;
        if (head[1] >> 16 < sizeof head
            || recv(fd, body.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size))
            return false;
        constexpr std::size_t behindNameAndLength = 8;
        if (size >= behindNameAndLength + sizeof wantedInterface
            && std::memcmp(body.data() + behindNameAndLength, wantedInterface, sizeof wantedInterface) == 0)
            return true;
    }
    return false;
}

/// Without an address libdbus would start a bus of its own where there is an X display.
bool hasSessionBus()
{
    const char* const folder = std::getenv("XDG_RUNTIME_DIR");
    return std::getenv("DBUS_SESSION_BUS_ADDRESS")
        || (folder && access((std::string(folder) + "/bus").c_str(), F_OK) == 0);
}

} // namespace

bool hasVirtualPointer(const std::string& waylandDisplay, std::chrono::milliseconds time)
{
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const bool isAsked = connectTo(fd, socketPath(waylandDisplay), time)
        && send(fd, getRegistryAndSync.data(), sizeof getRegistryAndSync, MSG_NOSIGNAL)
            == static_cast<ssize_t>(sizeof getRegistryAndSync);
    const bool isThere = isAsked && readsWantedGlobal(fd);
    close(fd);
    return isThere;
}

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

} // namespace companion::cli
