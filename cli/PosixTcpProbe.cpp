#include "cli/SystemProbes.h"

#include <algorithm>
#include <cerrno>
#include <memory>
#include <system_error>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::cli {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A connection on its way.
class Attempt {
public:
    Attempt(const std::string& address, std::uint16_t port)
        : m_answer{address, port, "no answer"}
        , m_socket(socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))
    {
        sockaddr_in target{};
        target.sin_family = AF_INET;
        target.sin_port = htons(port);
        if (inet_pton(AF_INET, address.c_str(), &target.sin_addr) != 1)
            end(EINVAL);
        else if (m_socket < 0 || connect(m_socket, reinterpret_cast<sockaddr*>(&target), sizeof target) == 0)
            end(m_socket < 0 ? errno : 0);
        else if (errno != EINPROGRESS)
            end(errno);
    }
    ~Attempt()
    {
        if (m_socket >= 0)
            close(m_socket);
    }
    Attempt(const Attempt&) = delete;
    Attempt& operator=(const Attempt&) = delete;

    bool isOver() const { return m_isOver; }
    /// poll(2) leaves a negative descriptor alone.
    int descriptor() const { return m_isOver ? -1 : m_socket; }
    const PortAnswer& answer() const { return m_answer; }

    void takeResult()
    {
        int error = 0;
        socklen_t size = sizeof error;
        getsockopt(m_socket, SOL_SOCKET, SO_ERROR, &error, &size);
        end(error);
    }

private:
    void end(int error)
    {
        m_isOver = true;
        m_answer.error = error == 0 ? "" : std::generic_category().message(error);
    }

    PortAnswer m_answer;
    int m_socket;
    bool m_isOver = false;
};

using Attempts = std::vector<std::unique_ptr<Attempt>>;

/// Waits for something to happen; false when everything has, or the time is over.
bool waitOnce(const Attempts& attempts, SteadyClock::time_point end)
{
    std::vector<pollfd> waiting;
    for (const auto& attempt : attempts)
        waiting.push_back({attempt->descriptor(), POLLOUT, 0});
    const bool isOver =
        std::all_of(attempts.begin(), attempts.end(), [](const auto& attempt) { return attempt->isOver(); });
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - SteadyClock::now()).count();
    if (isOver || left <= 0)
        return false;
    if (poll(waiting.data(), waiting.size(), static_cast<int>(left)) < 0 && errno != EINTR)
        return false;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        if (waiting[i].revents != 0)
            attempts[i]->takeResult();
    }
    return true;
}

} // namespace

std::vector<PortAnswer> PosixTcpProbe::connectTo(const std::vector<std::string>& addresses,
    const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time)
{
    const auto end = SteadyClock::now() + time;
    Attempts attempts;
    for (const std::string& address : addresses) {
        for (const std::uint16_t port : ports)
            attempts.push_back(std::make_unique<Attempt>(address, port));
    }
    while (waitOnce(attempts, end)) { }

    std::vector<PortAnswer> answers;
    for (const auto& attempt : attempts)
        answers.push_back(attempt->answer());
    return answers;
}

} // namespace companion::cli
