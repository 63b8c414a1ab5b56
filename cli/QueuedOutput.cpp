#include "cli/QueuedOutput.h"

#include "platform/posix/BlockedSignals.h"

#include <csignal>
#include <utility>

namespace companion::cli {

namespace {

constexpr std::size_t bytesOfJob = 128; // about what one takes beside its text

/// A reader that is gone ends the process, as it ends programs that print by themselves.
void takeBrokenPipes()
{
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_UNBLOCK, &brokenPipe, nullptr);
}

} // namespace

QueuedOutput::QueuedOutput(Output& inner, std::size_t limit)
    : m_inner(inner)
    , m_limit(limit)
{
    const BlockedSignals noSignals;
    m_thread = std::thread([this] { work(); });
}

QueuedOutput::~QueuedOutput()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void QueuedOutput::print(std::string_view line)
{
    add(line, [this](const std::string& text) { m_inner.print(text); });
}

void QueuedOutput::printCheck(Mark mark, std::string_view line)
{
    add(line, [this, mark](const std::string& text) { m_inner.printCheck(mark, text); });
}

void QueuedOutput::complain(std::string_view line)
{
    add(line, [this](const std::string& text) { m_inner.complain(text); });
}

void QueuedOutput::showProgress(std::string_view text)
{
    add(text, [this](const std::string& shown) { m_inner.showProgress(shown); });
}

void QueuedOutput::flush()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_waitingBytes == 0; });
}

void QueuedOutput::add(std::string_view text, std::function<void(const std::string&)> print)
{
    const std::size_t bytes = text.size() + bytesOfJob;
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this, bytes] { return m_jobs.empty() || m_waitingBytes + bytes <= m_limit; });
    m_waitingBytes += bytes;
    m_jobs.push_back({bytes, [text = std::string(text), print = std::move(print)] { print(text); }});
    lock.unlock();
    m_changed.notify_all();
}

void QueuedOutput::work()
{
    takeBrokenPipes();
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_isEnding || !m_jobs.empty(); });
        if (m_jobs.empty())
            return;
        const Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        lock.unlock();
        job.print();
        lock.lock();
        m_waitingBytes -= job.bytes;
        m_changed.notify_all();
    }
}

} // namespace companion::cli
