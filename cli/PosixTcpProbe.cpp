#include "cli/SystemProbes.h"

#include <arpa/inet.h>
#include <cerrno>
#include <future>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>

namespace companion::cli {

namespace {

/// The time-out for sending limits connect(2), too, which then fails with EINPROGRESS: socket(7).
void limitTime(int descriptor, std::chrono::milliseconds time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
    const timeval limit{seconds.count(), std::chrono::microseconds(time - seconds).count()};
    setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

/// The error number, 0 when there is none.
int connectTo(const std::string& address, std::uint16_t port, std::chrono::milliseconds time)
{
    sockaddr_in target{};
    target.sin_family = AF_INET;
    target.sin_port = htons(port);
    if (inet_pton(AF_INET, address.c_str(), &target.sin_addr) != 1)
        return EINVAL;
    const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return errno;
    limitTime(descriptor, time);
    const bool isConnected = connect(descriptor, reinterpret_cast<sockaddr*>(&target), sizeof target) == 0;
    const int error = isConnected ? 0 : errno;
    close(descriptor);
    return error;
}

std::string errorText(int error)
{
    if (error == EINPROGRESS)
        return "no answer";
    return error == 0 ? "" : std::generic_category().message(error);
}

} // namespace

std::vector<PortAnswer> connectToPorts(const std::vector<std::string>& addresses,
    const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time)
{
    std::vector<std::future<PortAnswer>> attempts;
    for (const std::string& address : addresses)
        for (const std::uint16_t port : ports)
            attempts.push_back(std::async(std::launch::async, [=] {
                return PortAnswer{address, port, errorText(connectTo(address, port, time))};
            }));
    std::vector<PortAnswer> answers;
    for (auto& attempt : attempts)
        answers.push_back(attempt.get());
    return answers;
}

} // namespace companion::cli
