#include "platform/posix/LineWriter.h"

#include "platform/posix/BlockedSignals.h"
#include "platform/Text.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <string>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

constexpr std::size_t maxLineBytes = 8 * 1024;
constexpr std::size_t maxBufferedBytes = 256 * 1024;
constexpr std::chrono::milliseconds flushTimeout(500);

/// Of a descriptor that somebody else made non-blocking.
bool waitUntilWritable(int descriptor)
{
    pollfd waiting{descriptor, POLLOUT, 0};
    return poll(&waiting, 1, -1) > 0 || errno == EINTR;
}

void writeAll(int descriptor, std::string_view lines)
{
    while (!lines.empty()) {
        const ssize_t written = ::write(descriptor, lines.data(), lines.size());
        if (written > 0)
            lines.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EAGAIN ? !waitUntilWritable(descriptor) : errno != EINTR)
            return;
    }
}

} // namespace

/// Outlives the writer while its thread still blocks in the sink.
struct LineWriter::Shared {
    explicit Shared(Sink givenSink)
        : sink(std::move(givenSink))
    {
    }

    const Sink sink;

    std::mutex mutex; ///< Guards all that follows.
    std::condition_variable changed;
    std::condition_variable finished;
    std::string buffer;
    std::size_t droppedLines = 0;
    bool isStarted = false;
    bool isEnding = false;
    bool isFinished = false;

    void append(std::string_view line);
    static void startThread(const std::shared_ptr<Shared>& shared);
    std::string takeLines();
    void run();
};

void LineWriter::Shared::append(std::string_view line)
{
    if (buffer.size() + line.size() > maxBufferedBytes)
        ++droppedLines;
    else
        buffer += line;
}

/// When the system has no thread to give, lines stay in the buffer, and the next line tries again.
void LineWriter::Shared::startThread(const std::shared_ptr<Shared>& shared)
{
    const BlockedSignals noSignals; // SIGPIPE among them
    try {
        std::thread([shared] { shared->run(); }).detach();
        shared->isStarted = true;
    } catch (const std::system_error&) {
    }
}

/// Blocks while there are none. Nothing at the end.
std::string LineWriter::Shared::takeLines()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return isEnding || !buffer.empty(); });
    if (droppedLines > 0)
        buffer += "(" + std::to_string(std::exchange(droppedLines, 0)) + " lines lost)\n";
    return std::exchange(buffer, {});
}

void LineWriter::Shared::run()
{
    for (std::string lines = takeLines(); !lines.empty(); lines = takeLines())
        sink(lines);
    const std::lock_guard lock(mutex);
    isFinished = true;
    finished.notify_all();
}

LineWriter::LineWriter(Sink sink)
    : m_shared(std::make_shared<Shared>(std::move(sink)))
{
}

LineWriter::~LineWriter()
{
    std::unique_lock lock(m_shared->mutex);
    if (!m_shared->isStarted)
        return;
    m_shared->isEnding = true;
    m_shared->changed.notify_one();
    m_shared->finished.wait_for(lock, flushTimeout, [this] { return m_shared->isFinished; });
}

void LineWriter::write(std::string_view line)
{
    const std::string text = printable(line, maxLineBytes) + '\n';
    bool wasEmpty = false;
    {
        const std::lock_guard lock(m_shared->mutex);
        wasEmpty = m_shared->buffer.empty();
        m_shared->append(text);
        if (!m_shared->isStarted)
            Shared::startThread(m_shared);
    }
    if (wasEmpty)
        m_shared->changed.notify_one();
}

LineWriter::Sink descriptorSink(int descriptor)
{
    // A duplicate, so that a thread that blocks in it does not write to another file opened later under the same number.
    const int duplicate = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    const std::shared_ptr<const void> closer(nullptr, [duplicate](const void*) { close(duplicate); });
    return [duplicate, closer](std::string_view lines) { writeAll(duplicate, lines); };
}

} // namespace companion
