#include "platform/qt/QtMainQueue.h"

#include <algorithm>
#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QTimer>

namespace companion {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

/// Qt's own events get their turn after this time, however many jobs wait.
constexpr auto longestSlice = 5ms;

/// Rounded up, so that nothing is early.
std::chrono::milliseconds wholeMilliseconds(std::chrono::nanoseconds duration)
{
    return std::chrono::ceil<std::chrono::milliseconds>(std::max(duration, std::chrono::nanoseconds::zero()));
}

int openEventDescriptor()
{
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "No descriptor for the main queue");
    return descriptor;
}

} // namespace

/// Ticks at its start plus a whole number of intervals, so that lateness never adds up.
class QtMainQueue::Timer : public RepeatingTimer {
public:
    Timer(QtMainQueue& queue, std::chrono::nanoseconds interval, Job tick)
        : m_queue(queue)
        , m_interval(std::max<std::chrono::nanoseconds>(interval, 1ms))
        , m_due(SteadyClock::now() + m_interval)
        , m_tick(std::make_shared<const Job>(std::move(tick)))
    {
        m_timer.setSingleShot(true);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { fire(); });
        arm(SteadyClock::now());
    }

private:
    void arm(SteadyClock::time_point now) { m_timer.start(wholeMilliseconds(m_due - now)); }

    void fire()
    {
        const auto now = SteadyClock::now();
        const bool isDue = now >= m_due;
        if (isDue)
            m_due += m_interval * ((now - m_due) / m_interval + 1);
        arm(now);
        if (!isDue)
            return;
        const auto tick = m_tick; // the tick may destroy this timer
        m_queue.runTick(*tick);
    }

    QtMainQueue& m_queue;
    std::chrono::nanoseconds m_interval;
    SteadyClock::time_point m_due;
    std::shared_ptr<const Job> m_tick;
    QTimer m_timer;
};

QtMainQueue::Blocker::Blocker(QtMainQueue& queue)
    : m_queue(queue)
{
    if (m_queue.m_blockers++ == 0 && m_queue.m_whenBlocked)
        m_queue.m_whenBlocked();
}

QtMainQueue::Blocker::~Blocker()
{
    --m_queue.m_blockers;
    m_queue.resume();
}

QtMainQueue::QtMainQueue()
    : m_wakeUp(openEventDescriptor())
    , m_notifier(m_wakeUp, QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { serve(); });
}

QtMainQueue::~QtMainQueue()
{
    m_notifier.setEnabled(false);
    dropAllJobs();
    close(m_wakeUp);
}

void QtMainQueue::async(Job job)
{
    {
        const std::lock_guard lock(m_waiting.mutex);
        m_waiting.jobs.push_back(std::move(job));
        if (std::exchange(m_waiting.isWakePending, true))
            return;
    }
    eventfd_write(m_wakeUp, 1); // with the mutex free, or the woken thread would first of all wait for it
}

void QtMainQueue::after(std::chrono::nanoseconds delay, Job job)
{
    // Timers belong to the thread that makes them. On the main thread this is a plain call.
    QMetaObject::invokeMethod(&m_delays, [this, due = SteadyClock::now() + delay, job = std::move(job)] {
        auto* const timer = new QTimer(&m_delays);
        timer->setSingleShot(true);
        timer->setTimerType(Qt::PreciseTimer);
        QObject::connect(timer, &QTimer::timeout, &m_delays, [this, timer, job] {
            async(job);
            timer->deleteLater();
        });
        timer->start(wholeMilliseconds(due - SteadyClock::now()));
    });
}

std::unique_ptr<RepeatingTimer> QtMainQueue::repeat(std::chrono::nanoseconds interval, Job tick)
{
    return std::make_unique<Timer>(*this, interval, std::move(tick));
}

void QtMainQueue::serve()
{
    eventfd_t count = 0;
    if (mayRun())
        runSlice();
    else
        eventfd_read(m_wakeUp, &count); // `resume` writes again
}

/// What is left at the end of the slice is served at the event loop's next turn, after whatever else has become ready
/// there; a posted event would be handled in this same turn, before the window's own.
void QtMainQueue::runSlice()
{
    const auto end = SteadyClock::now() + longestSlice;
    while (m_blockers == 0) {
        const QScopedValueRollback running(m_isRunning, true);
        const Job job = takeJob();
        if (!job)
            return;
        job();
        if (SteadyClock::now() >= end)
            break;
    }
    resume();
}

/// The first job, or none, after which whoever hands in the next one wakes the main thread.
QtMainQueue::Job QtMainQueue::takeJob()
{
    const std::lock_guard lock(m_waiting.mutex);
    m_waiting.isWakePending = !m_waiting.jobs.empty();
    if (!m_waiting.isWakePending) {
        eventfd_t count = 0;
        eventfd_read(m_wakeUp, &count);
        return {};
    }
    Job job = std::move(m_waiting.jobs.front());
    m_waiting.jobs.pop_front();
    return job;
}

/// Has the event loop look for jobs that came while none could run.
void QtMainQueue::resume()
{
    if (mayRun())
        eventfd_write(m_wakeUp, 1);
}

void QtMainQueue::runTick(const Job& tick)
{
    if (!mayRun() || isTracking())
        return;
    {
        const QScopedValueRollback running(m_isRunning, true);
        tick();
    }
    resume();
}

void QtMainQueue::dropAllJobs()
{
    std::deque<Job> jobs;
    do { // what a job holds may hand in another one as it is destroyed
        jobs.clear();
        QCoreApplication::removePostedEvents(&m_delays);
        const QObjectList delays = m_delays.children();
        qDeleteAll(delays);
        const std::lock_guard lock(m_waiting.mutex);
        jobs.swap(m_waiting.jobs);
    } while (!jobs.empty() || !m_delays.children().isEmpty());
}

} // namespace companion
