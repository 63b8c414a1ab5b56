#include "platform/posix/SystemLogSocket.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

constexpr const char* daemonAddress = "/dev/log";

// In English whatever the locale, which strftime(3) would follow.
constexpr const char* months[] = {
    "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string header(const std::string& identity)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char text[64] = "";
    std::snprintf(text, sizeof text, "<%d>%s %2d %02d:%02d:%02d ", LOG_USER | LOG_NOTICE,
        months[local.tm_mon], local.tm_mday, local.tm_hour, local.tm_min, local.tm_sec);
    return text + identity + "[" + std::to_string(getpid()) + "]: ";
}

bool isDaemonGone(int error)
{
    return error == ECONNREFUSED || error == ENOENT || error == ENOTCONN || error == ECONNRESET;
}

} // namespace

SystemLogSocket::SystemLogSocket(std::string identity)
    : m_identity(std::move(identity))
{
}

SystemLogSocket::~SystemLogSocket()
{
    if (m_socket >= 0)
        close(m_socket);
}

bool SystemLogSocket::send(std::string_view line)
{
    const std::string message = header(m_identity).append(line);
    const bool wasConnected = m_socket >= 0;
    int error = trySend(message);
    if (wasConnected && isDaemonGone(error)) // perhaps only the one before a restart
        error = trySend(message);
    return error == 0 || isDaemonGone(error);
}

/// Tells the error, or 0.
int SystemLogSocket::trySend(std::string_view message)
{
    if (m_socket < 0) {
        if (const int error = connectToDaemon())
            return error;
    }
    if (::send(m_socket, message.data(), message.size(), MSG_DONTWAIT | MSG_NOSIGNAL) >= 0)
        return 0;
    const int error = errno;
    if (isDaemonGone(error))
        close(std::exchange(m_socket, -1));
    return error;
}

int SystemLogSocket::connectToDaemon()
{
    m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (m_socket < 0)
        return errno;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, daemonAddress);
    if (connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
        return 0;
    const int error = errno;
    close(std::exchange(m_socket, -1));
    return error;
}

} // namespace companion
