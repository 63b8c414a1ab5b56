#include "platform/posix/LineWriter.h"

#include "platform/posix/BlockedSignals.h"
#include "platform/posix/HarmlessLine.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <fcntl.h>
#include <mutex>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

constexpr std::size_t longestLine = 8 * 1024;
constexpr std::size_t mostBytesWaiting = 256 * 1024;
constexpr std::chrono::milliseconds patienceAtTheEnd(500);

/// A descriptor that was made non-blocking by whoever shares it is waited for.
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

/// A duplicate: a thread that hangs in its write must not come upon another file under the same number later.
class OwnDescriptor {
public:
    explicit OwnDescriptor(int original)
        : m_value(fcntl(original, F_DUPFD_CLOEXEC, 0))
    {
    }
    ~OwnDescriptor() { close(m_value); }
    OwnDescriptor(const OwnDescriptor&) = delete;
    OwnDescriptor& operator=(const OwnDescriptor&) = delete;

    int value() const { return m_value; }

private:
    int m_value;
};

} // namespace

/// Shared with the thread, which is left to itself when it still hangs in a write at the end.
struct LineWriter::Shared {
    explicit Shared(Sink givenSink)
        : sink(std::move(givenSink))
    {
    }

    const Sink sink;

    std::mutex mutex;
    std::condition_variable somethingToDo;
    std::condition_variable finished;
    std::string waiting;
    std::size_t lost = 0;
    bool isEnding = false;
    bool isFinished = false;

    bool addLine(std::string_view line);
    void tellOfLostLines();
    void run();
};

/// With the mutex held; tells whether the thread may be asleep.
bool LineWriter::Shared::addLine(std::string_view line)
{
    if (waiting.size() + line.size() >= mostBytesWaiting) {
        ++lost;
        return false;
    }
    const bool wasEmpty = waiting.empty();
    waiting += line;
    waiting += '\n';
    return wasEmpty;
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
        lock.unlock();
        sink(lines);
        lock.lock();
    }
    isFinished = true;
    finished.notify_all();
}

LineWriter::LineWriter(Sink sink)
    : m_shared(std::make_shared<Shared>(std::move(sink)))
{
    const BlockedSignals noSignals; // SIGPIPE among them
    std::thread([shared = m_shared] { shared->run(); }).detach();
}

LineWriter::~LineWriter()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->isEnding = true;
    m_shared->somethingToDo.notify_one();
    m_shared->finished.wait_for(lock, patienceAtTheEnd, [this] { return m_shared->isFinished; });
}

void LineWriter::write(std::string_view line)
{
    const std::string text = harmlessLine(line, longestLine);
    bool mayBeAsleep = false;
    {
        const std::lock_guard lock(m_shared->mutex);
        mayBeAsleep = m_shared->addLine(text);
    }
    if (mayBeAsleep)
        m_shared->somethingToDo.notify_one();
}

LineWriter::Sink descriptorSink(int descriptor)
{
    return [own = std::make_shared<const OwnDescriptor>(descriptor)](
               std::string_view lines) { writeAll(own->value(), lines); };
}

} // namespace companion
