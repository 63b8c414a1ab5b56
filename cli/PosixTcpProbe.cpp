#include "cli/SystemProbes.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace companion::cli {

namespace {

using SteadyClock = std::chrono::steady_clock;

std::string errorText(int error)
{
    return error == 0 ? "" : std::generic_category().message(error);
}

/// A connection on its way, or -1 with `errno` set.
int beginToConnect(const std::string& address, std::uint16_t port)
{
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &target.sin_addr) != 1) {
        errno = EINVAL;
        return -1;
    }
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0 || connect(descriptor, reinterpret_cast<sockaddr*>(&target), sizeof target) == 0
        || errno == EINPROGRESS)
        return descriptor;
    const int error = errno;
    close(descriptor);
    errno = error;
    return -1;
}

/// How connecting ended. Closes the connection, and poll(2) leaves it out from then on.
int takeError(pollfd& attempt)
{
    int error = 0;
    socklen_t size = sizeof error;
    getsockopt(attempt.fd, SOL_SOCKET, SO_ERROR, &error, &size);
    close(attempt.fd);
    attempt.fd = -1;
    return error;
}

/// Waits for an attempt to end; false when all have, or the time is over.
bool waitForOne(std::vector<pollfd>& attempts, SteadyClock::time_point end)
{
    const bool isOver =
        std::all_of(attempts.begin(), attempts.end(), [](const pollfd& each) { return each.fd < 0; });
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now()).count();
    return !isOver && left > 0 && poll(attempts.data(), attempts.size(), static_cast<int>(left)) > 0;
}

} // namespace

std::vector<PortAnswer> connectToPorts(const std::vector<std::string>& addresses,
    const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time)
{
    const auto end = SteadyClock::now() + time;
    std::vector<PortAnswer> answers;
    std::vector<pollfd> attempts; // one for each answer
    for (const std::string& address : addresses) {
        for (const std::uint16_t port : ports) {
            const int descriptor = beginToConnect(address, port);
            answers.push_back({address, port, descriptor < 0 ? errorText(errno) : "no answer"});
            attempts.push_back({descriptor, POLLOUT, 0});
        }
    }
    while (waitForOne(attempts, end)) {
        for (std::size_t i = 0; i < attempts.size(); ++i) {
            if (attempts[i].revents != 0)
                answers[i].error = errorText(takeError(attempts[i]));
        }
    }
    for (const pollfd& attempt : attempts) {
        if (attempt.fd >= 0)
            close(attempt.fd);
    }
    return answers;
}

} // namespace companion::cli
