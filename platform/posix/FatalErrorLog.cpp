#include "platform/posix/FatalErrorLog.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <syslog.h>
#include <unistd.h>

namespace companion {

namespace {

constexpr int longestText = 900; // RFC 3164 allows 1,024 bytes for the whole message

/// The form of RFC 3164 without a time stamp, which the daemon then adds (section 4.3.2).
std::size_t formMessage(std::array<char, 1024>& message, std::string_view what)
{
    const int length = std::snprintf(message.data(), message.size(),
        "<%d>panel-companion[%d]: Fatal error: %.*s", LOG_USER | LOG_CRIT, static_cast<int>(getpid()),
        static_cast<int>(std::min<std::size_t>(what.size(), longestText)), what.data());
    return std::min<std::size_t>(static_cast<std::size_t>(std::max(length, 0)), message.size() - 1);
}

} // namespace

void logFatalError(std::string_view what, const char* logSocket)
{
    std::array<char, 1024> message{};
    const std::size_t length = formMessage(message, what);
    std::replace_if(
        message.begin(), message.begin() + length,
        [](char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f; }, ' ');

    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, logSocket, sizeof address.sun_path - 1);
    const int descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sendto(descriptor, message.data(), length, MSG_DONTWAIT | MSG_NOSIGNAL,
        reinterpret_cast<const sockaddr*>(&address), sizeof address);
    close(descriptor);
}

} // namespace companion
