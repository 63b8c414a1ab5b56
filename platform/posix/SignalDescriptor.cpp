#include "platform/posix/SignalDescriptor.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <system_error>
#include <unistd.h>

namespace companion {

namespace {

// A signal handler reaches nothing else. A descriptor made from a blocked signal mask (signalfd) would do without,
// but every thread of every library and every child would have to keep the signals blocked.
std::atomic<int> handlerFd = -1;
static_assert(std::atomic<int>::is_always_lock_free);

extern "C" void writeSignalToPipe(int signal)
{
    const int savedErrno = errno;
    const auto byte = static_cast<unsigned char>(signal);
    // A full pipe is readable already, which is all that it is for.
    [[maybe_unused]] const ssize_t written = write(handlerFd, &byte, 1);
    errno = savedErrno;
}

} // namespace

SignalDescriptor::SignalDescriptor(std::initializer_list<int> signals)
{
    if (handlerFd != -1)
        throw std::logic_error("There is a SignalDescriptor already");
    openPipe();
    handlerFd = m_writeFd;
    for (const int signal : signals)
        handle(signal);
}

SignalDescriptor::~SignalDescriptor()
{
    for (const auto& [signal, action] : m_before)
        sigaction(signal, &action, nullptr);
    handlerFd = -1;
    close(m_readFd);
    close(m_writeFd);
}

void SignalDescriptor::openPipe()
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "No pipe for signals");
    m_readFd = ends[0];
    m_writeFd = ends[1];
}

void SignalDescriptor::handle(int signal)
{
    struct sigaction before = {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_IGN)
        return;
    struct sigaction action = {};
    action.sa_handler = writeSignalToPipe;
    action.sa_flags = SA_RESTART;
    sigaction(signal, &action, nullptr);
    m_before[signal] = before;
}

bool SignalDescriptor::isWaiting() const
{
    pollfd waiting{m_readFd, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
}

std::optional<int> SignalDescriptor::take()
{
    unsigned char byte = 0;
    if (read(m_readFd, &byte, 1) != 1)
        return std::nullopt;
    return byte;
}

} // namespace companion
