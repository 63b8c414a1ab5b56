#include "simulator/HeldConnections.h"

#include <algorithm>
#include <cerrno>
#include <microhttpd.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>

namespace companion::simulator {

namespace {

int openEvent()
{
    const int fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (fd < 0)
        throw std::system_error(errno, std::generic_category(), "no event descriptor");
    return fd;
}

int socketOf(MHD_Connection* connection)
{
    return MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

/// The descriptors of `waiting` whose client is gone, after `timeout` milliseconds or at the first event.
std::vector<int> waitForGone(std::vector<pollfd>& waiting, int timeout)
{
    std::vector<int> gone;
    if (poll(waiting.data(), waiting.size(), timeout) <= 0)
        return gone;
    for (std::size_t i = 1; i < waiting.size(); ++i)
        if (waiting[i].revents != 0)
            gone.push_back(waiting[i].fd);
    return gone;
}

} // namespace

HeldConnections::HeldConnections()
    : m_event(openEvent())
    , m_thread([this] { watch(); })
{
}

HeldConnections::~HeldConnections()
{
    stop();
    m_thread.join();
    close(m_event);
}

std::uint64_t HeldConnections::ticket() const
{
    const std::lock_guard lock(m_mutex);
    return m_epoch;
}

void HeldConnections::hold(
    MHD_Connection* connection, std::optional<Time> due, std::uint64_t ticket, std::atomic<bool>& isGone)
{
    const std::lock_guard lock(m_mutex);
    MHD_suspend_connection(connection);
    m_held.push_back({connection, socketOf(connection), due, ticket, &isGone});
    if (m_isStopping)
        release(m_held.size() - 1, /*isGone=*/true);
    notify();
}

void HeldConnections::wakeAll()
{
    const std::lock_guard lock(m_mutex);
    ++m_epoch;
    notify();
}

void HeldConnections::stop()
{
    const std::lock_guard lock(m_mutex);
    m_isStopping = true;
    while (!m_held.empty())
        release(m_held.size() - 1, /*isGone=*/true);
    notify();
}

void HeldConnections::watch()
{
    for (;;) {
        std::vector<pollfd> waiting{{m_event, POLLIN, 0}};
        int timeout = -1;
        {
            const std::lock_guard lock(m_mutex);
            releaseReady();
            if (m_isStopping)
                return;
            for (const Held& held : m_held)
                waiting.push_back({held.fd, POLLRDHUP, 0});
            timeout = millisecondsToNext();
        }
        const auto gone = waitForGone(waiting, timeout);
        eventfd_t ignored = 0;
        eventfd_read(m_event, &ignored);
        releaseGone(gone);
    }
}

void HeldConnections::notify() const
{
    eventfd_write(m_event, 1);
}

void HeldConnections::release(std::size_t index, bool isGone)
{
    const Held held = m_held[index];
    m_held.erase(m_held.begin() + static_cast<std::ptrdiff_t>(index));
    if (isGone)
        held.isGone->store(true);
    MHD_resume_connection(held.connection);
}

void HeldConnections::releaseReady()
{
    const Time now = std::chrono::steady_clock::now();
    for (std::size_t i = m_held.size(); i-- > 0;) {
        const Held& held = m_held[i];
        if (held.due ? *held.due <= now : held.ticket != m_epoch)
            release(i, /*isGone=*/false);
    }
}

/// Only this thread releases (but for the end), so a descriptor still means the connection that was watched.
void HeldConnections::releaseGone(const std::vector<int>& fds)
{
    const std::lock_guard lock(m_mutex);
    for (std::size_t i = m_held.size(); i-- > 0;)
        if (std::find(fds.begin(), fds.end(), m_held[i].fd) != fds.end())
            release(i, /*isGone=*/true);
}

int HeldConnections::millisecondsToNext() const
{
    std::optional<Time> next;
    for (const Held& held : m_held)
        if (held.due && (!next || *held.due < *next))
            next = held.due;
    if (!next)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(*next - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<long>(left.count(), 0, 60'000));
}

} // namespace companion::simulator
