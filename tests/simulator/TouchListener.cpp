#include "tests/simulator/TouchListener.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

TouchListener::TouchListener()
    : m_fd(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (bind(m_fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0)
        throw std::runtime_error("no UDP port");
}

TouchListener::~TouchListener()
{
    close(m_fd);
}

std::string TouchListener::port() const
{
    sockaddr_in local{};
    socklen_t size = sizeof local;
    getsockname(m_fd, reinterpret_cast<sockaddr*>(&local), &size);
    return std::to_string(ntohs(local.sin_port));
}

std::optional<TouchListener::Datagram> TouchListener::receive(std::chrono::milliseconds time)
{
    pollfd waiting{m_fd, POLLIN, 0};
    if (poll(&waiting, 1, static_cast<int>(time.count())) <= 0)
        return std::nullopt;
    static char buffer[65536];
    sockaddr_in sender{};
    socklen_t size = sizeof sender;
    const ssize_t count =
        recvfrom(m_fd, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&sender), &size);
    if (count < 0)
        return std::nullopt;
    char from[INET_ADDRSTRLEN] = "";
    inet_ntop(AF_INET, &sender.sin_addr, from, sizeof from);
    return Datagram{
        std::string(buffer, static_cast<std::size_t>(count)), from, std::chrono::steady_clock::now()};
}

} // namespace companion::testing
