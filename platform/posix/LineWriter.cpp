#include "platform/posix/LineWriter.h"

#include "platform/posix/BlockedSignals.h"
#include "platform/Text.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

constexpr std::size_t longestLine = 8 * 1024;
constexpr std::size_t mostBytesWaiting = 256 * 1024;
constexpr std::chrono::milliseconds patienceAtTheEnd(500);
constexpr int mostLinesAtOnce = 16;
constexpr std::chrono::milliseconds lineCountPeriod(10);

/// A descriptor that was made non-blocking by whoever shares it is waited for.
bool waitUntilWritable(int descriptor)
{
    pollfd waiting{descriptor, POLLOUT, 0};
    return poll(&waiting, 1, -1) > 0 || errno == EINTR;
}

/// write(2) without the signal of a pipe that nobody reads; the thread may be one that others expect it on.
ssize_t writeWithoutSignal(int descriptor, std::string_view text)
{
    sigset_t brokenPipe;
    sigset_t before;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
    const ssize_t written = ::write(descriptor, text.data(), text.size());
    if (written < 0 && errno == EPIPE) {
        const timespec noTime = {};
        sigtimedwait(&brokenPipe, nullptr, &noTime);
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    return written;
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

/// The file descriptor under another number, so that a thread that hangs in its write does not come upon another file
/// later, and where possible once more for writes that do not wait. That one is opened anew, not duplicated: to wait
/// or not to wait is a matter of all who share an open file.
class OutputDescriptor {
public:
    explicit OutputDescriptor(int original)
        : m_waiting(fcntl(original, F_DUPFD_CLOEXEC, 0))
        , m_hasty(openHasty())
    {
    }
    ~OutputDescriptor()
    {
        close(m_waiting);
        close(m_hasty);
    }
    OutputDescriptor(const OutputDescriptor&) = delete;
    OutputDescriptor& operator=(const OutputDescriptor&) = delete;

    int waiting() const { return m_waiting; }
    bool mayBeHasty() const { return m_isSocket || m_hasty >= 0; }

    /// Tells how many bytes were written.
    std::size_t writeWithoutWaiting(std::string_view lines) const
    {
        const ssize_t written = m_isSocket
            ? send(m_waiting, lines.data(), lines.size(), MSG_DONTWAIT | MSG_NOSIGNAL)
            : writeWithoutSignal(m_hasty, lines);
        return written > 0 ? static_cast<std::size_t>(written) : 0;
    }

private:
    int openHasty()
    {
        struct stat status = {};
        if (fstat(m_waiting, &status) != 0)
            return -1;
        m_isSocket = S_ISSOCK(status.st_mode);
        // A file takes what it is given, but a busy disk may take its time about it.
        if (!S_ISFIFO(status.st_mode) && !S_ISCHR(status.st_mode))
            return -1;
        const std::string path = "/proc/self/fd/" + std::to_string(m_waiting);
        return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    }

    int m_waiting;
    bool m_isSocket = false;
    int m_hasty;
};

} // namespace

/// Shared with the thread, which is left to itself when it still hangs in a write at the end.
struct LineWriter::Shared {
    explicit Shared(LineSink givenSink)
        : sink(std::move(givenSink))
    {
    }

    const LineSink sink;

    std::mutex mutex;
    std::condition_variable somethingToDo;
    std::condition_variable finished;
    std::string waiting;
    std::size_t lost = 0;
    int linesAtOnce = 0;
    std::chrono::steady_clock::time_point linesCountedSince;
    bool isWriting = false;
    bool isStarted = false;
    bool isEnding = false;
    bool isFinished = false;

    // These are called with the mutex held.
    bool mayWriteAtOnce();
    void add(std::string_view lines);

    void tellOfLostLines();
    void run();
};

bool LineWriter::Shared::mayWriteAtOnce()
{
    if (!sink.writeAtOnce || isWriting || !waiting.empty())
        return false;
    const auto now = std::chrono::steady_clock::now();
    if (now - linesCountedSince >= lineCountPeriod) {
        linesCountedSince = now;
        linesAtOnce = 0;
    }
    return linesAtOnce++ < mostLinesAtOnce;
}

void LineWriter::Shared::add(std::string_view lines)
{
    if (waiting.size() + lines.size() > mostBytesWaiting)
        ++lost;
    else
        waiting += lines;
}

void LineWriter::Shared::tellOfLostLines()
{
    if (lost > 0)
        waiting += "(" + std::to_string(std::exchange(lost, 0)) + " lines lost)\n";
}

void LineWriter::Shared::run()
{
    std::string lines;
    std::unique_lock lock(mutex);
    while (true) {
        somethingToDo.wait(lock, [this] { return isEnding || !waiting.empty(); });
        if (waiting.empty())
            break;
        tellOfLostLines();
        lines.clear();
        lines.swap(waiting);
        isWriting = true;
        lock.unlock();
        sink.write(lines);
        lock.lock();
        isWriting = false;
    }
    isFinished = true;
    finished.notify_all();
}

LineWriter::LineWriter(LineSink sink)
    : m_shared(std::make_shared<Shared>(std::move(sink)))
{
}

LineWriter::~LineWriter()
{
    std::unique_lock lock(m_shared->mutex);
    if (!m_shared->isStarted)
        return;
    m_shared->isEnding = true;
    m_shared->somethingToDo.notify_one();
    m_shared->finished.wait_for(lock, patienceAtTheEnd, [this] { return m_shared->isFinished; });
}

void LineWriter::write(std::string_view line)
{
    const std::string text = printable(line, longestLine) + '\n';
    bool mayBeAsleep = false;
    {
        const std::lock_guard lock(m_shared->mutex);
        std::string_view rest = text;
        if (m_shared->mayWriteAtOnce())
            rest.remove_prefix(m_shared->sink.writeAtOnce(rest));
        if (rest.empty())
            return;
        mayBeAsleep = m_shared->waiting.empty();
        m_shared->add(rest);
        startThread();
    }
    if (mayBeAsleep)
        m_shared->somethingToDo.notify_one();
}

/// With the mutex held. Without a thread to be had, lines wait, and another is asked for at the next one.
void LineWriter::startThread()
{
    if (m_shared->isStarted)
        return;
    const BlockedSignals noSignals; // SIGPIPE among them
    try {
        std::thread([shared = m_shared] { shared->run(); }).detach();
        m_shared->isStarted = true;
    } catch (const std::system_error&) {
    }
}

LineSink descriptorSink(int descriptor)
{
    const auto output = std::make_shared<const OutputDescriptor>(descriptor);
    LineSink sink{[output](std::string_view lines) { writeAll(output->waiting(), lines); }};
    if (output->mayBeHasty())
        sink.writeAtOnce = [output](std::string_view lines) { return output->writeWithoutWaiting(lines); };
    return sink;
}

} // namespace companion
