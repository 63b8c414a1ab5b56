#include "simulator/TouchSender.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr std::size_t maxWaiting = 64;
constexpr std::chrono::milliseconds receiverCheckInterval{200};

sockaddr_in socketAddress(const std::string& ip, std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, ip.c_str(), &address.sin_addr);
    return address;
}

int openSocket(const std::string& address)
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in source = socketAddress(address, 0);
    if (fd >= 0 && bind(fd, reinterpret_cast<const sockaddr*>(&source), sizeof source) == 0)
        return fd;
    const std::system_error error(errno, std::generic_category(), "cannot send touches from " + address);
    if (fd >= 0)
        close(fd);
    throw error;
}

std::string datagramOf(const GestureStep& step)
{
    return step.isTouch ? step.bytes + std::to_string(nowMs()) + ";" : step.bytes;
}

} // namespace

std::string datagramCount(std::size_t count)
{
    return std::to_string(count) + (count == 1 ? " datagram" : " datagrams");
}

TouchSender::TouchSender(PanelState& state, const std::string& address, std::uint16_t port)
    : m_state(state)
    , m_port(port)
    , m_socket(openSocket(address))
    , m_thread([this] { run(); })
{
}

TouchSender::~TouchSender()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    m_changed.notify_all();
    m_thread.join();
    close(m_socket);
}

Playback TouchSender::play(Gesture gesture, WhenOver whenOver)
{
    Task task([this, gesture = std::move(gesture), whenOver = std::move(whenOver)] {
        PlaybackResult result = send(gesture);
        if (whenOver)
            whenOver(result);
        return result;
    });
    const std::lock_guard lock(m_mutex);
    if (m_waiting.size() >= maxWaiting)
        return {};
    m_waiting.push_back(std::move(task));
    m_changed.notify_all();
    return m_waiting.back().get_future().share();
}

void TouchSender::run()
{
    for (Task task = nextTask(); task.valid(); task = nextTask())
        task();
}

/// Not valid when the sender is to stop.
TouchSender::Task TouchSender::nextTask()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_isStopping || !m_waiting.empty(); });
    if (m_isStopping)
        return {};
    Task task = std::move(m_waiting.front());
    m_waiting.pop_front();
    return task;
}

PlaybackResult TouchSender::send(const Gesture& gesture)
{
    std::size_t sent = 0;
    SteadyTime due = std::chrono::steady_clock::now();
    for (const GestureStep& step : gesture) {
        due += step.pause;
        if (!sleepUntil(due, sent > 0))
            return {sent, false, "the panel is being switched off"};
        const auto receiver = m_state.touchReceiver();
        if (!receiver)
            return {sent, true, "nobody has asked for touches"};
        if (const std::string problem = sendDatagram(*receiver, datagramOf(step)); !problem.empty())
            return {sent, false, problem};
        m_state.recordTouch();
        ++sent;
    }
    return {sent, false, ""};
}

/// False when the sender is to stop. A gesture that has begun stops waiting when nobody wants touches any more.
bool TouchSender::sleepUntil(SteadyTime time, bool hasBegun)
{
    std::unique_lock lock(m_mutex);
    while (!m_isStopping && std::chrono::steady_clock::now() < time && (!hasBegun || m_state.touchReceiver()))
        m_changed.wait_until(lock, std::min(time, std::chrono::steady_clock::now() + receiverCheckInterval));
    return !m_isStopping;
}

std::string TouchSender::sendDatagram(const std::string& ip, const std::string& bytes) const
{
    const sockaddr_in address = socketAddress(ip, m_port);
    const ssize_t sent = sendto(
        m_socket, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address), sizeof address);
    return sent < 0 ? "cannot send to " + ip + ": " + std::strerror(errno) : "";
}

} // namespace companion::simulator
