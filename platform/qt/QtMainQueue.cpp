#include "platform/qt/QtMainQueue.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

/// Qt's own events get their turn after so long, however many jobs wait.
constexpr auto longestSlice = 5ms;

/// A burst's memory is given back beyond so many jobs.
constexpr std::size_t jobsKeptInMemory = 4096;

/// Never early: what is left of a millisecond counts as a whole one.
std::chrono::milliseconds wholeMilliseconds(std::chrono::nanoseconds duration)
{
    return std::chrono::ceil<std::chrono::milliseconds>(std::max(duration, std::chrono::nanoseconds::zero()));
}

} // namespace

/// Keeps jobs and ticks from being entered while one of them runs.
class QtMainQueue::Running {
public:
    explicit Running(QtMainQueue& queue)
        : m_queue(queue)
    {
        m_queue.m_isRunning = true;
    }
    ~Running() { m_queue.m_isRunning = false; }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

private:
    QtMainQueue& m_queue;
};

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

/// While the queue is held, its descriptor would keep the event loop awake: it is left alone until the queue is free.
class QtMainQueue::Watch : public ReadableWatch {
public:
    Watch(QtMainQueue& queue, int descriptor, Job job)
        : m_queue(queue)
        , m_job(std::make_shared<const Job>(std::move(job)))
        , m_notifier(descriptor, QSocketNotifier::Read)
    {
        QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { serve(); });
    }
    ~Watch() override { std::erase(m_queue.m_heldWatches, this); }

    void lookAgain() { m_notifier.setEnabled(true); }

private:
    void serve()
    {
        if (m_queue.isHeld()) {
            m_notifier.setEnabled(false);
            m_queue.m_heldWatches.push_back(this);
            return;
        }
        const auto job = m_job; // the job may destroy this watch
        m_queue.runNow(*job);
    }

    QtMainQueue& m_queue;
    const std::shared_ptr<const Job> m_job;
    QSocketNotifier m_notifier;
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

QtMainQueue::QtMainQueue(TrackingPredicate isTracking)
    : m_isTracking(std::move(isTracking))
    , m_notifier(m_wakeUp.descriptor(), QSocketNotifier::Read)
{
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier, [this] { serve(); });
    m_delayTimer.setSingleShot(true);
    m_delayTimer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_delayTimer, &QTimer::timeout, &m_delayTimer, [this] {
        moveDueJobs();
        armDelayTimer();
        resume();
    });
}

QtMainQueue::~QtMainQueue()
{
    m_notifier.setEnabled(false);
    dropAllJobs();
}

void QtMainQueue::async(Job job)
{
    // Rung with the mutex free, or the woken thread would first of all wait for it.
    if (add(std::move(job)))
        m_wakeUp.ring();
}

void QtMainQueue::after(std::chrono::nanoseconds delay, Job job)
{
    // Only the main thread may set its timer.
    if (addDelayed(SteadyClock::now() + delay, std::move(job)))
        m_wakeUp.ring();
}

std::unique_ptr<RepeatingTimer> QtMainQueue::repeat(std::chrono::nanoseconds interval, Job tick)
{
    return std::make_unique<Timer>(*this, interval, std::move(tick));
}

std::unique_ptr<ReadableWatch> QtMainQueue::whenReadable(int descriptor, Job job)
{
    return std::make_unique<Watch>(*this, descriptor, std::move(job));
}

bool QtMainQueue::isLater(const DelayedJob& a, const DelayedJob& b)
{
    return std::tie(a.due, a.serial) > std::tie(b.due, b.serial);
}

/// Tells whether the main thread is to be woken: once is enough for all jobs that come before it looks.
bool QtMainQueue::add(Job job)
{
    const std::lock_guard lock(m_mutex);
    m_incoming.push_back(std::move(job));
    return !std::exchange(m_isWakePending, true);
}

/// Tells whether it is the first one to run now, so that the timer must be set anew.
bool QtMainQueue::addDelayed(SteadyClock::time_point due, Job job)
{
    const std::lock_guard lock(m_mutex);
    const std::uint64_t serial = m_delayedJobs++;
    m_delayed.push_back({due, serial, std::move(job)});
    std::push_heap(m_delayed.begin(), m_delayed.end(), isLater);
    const bool isFirst = m_delayed.front().serial == serial;
    m_isDelayTimerOutdated = m_isDelayTimerOutdated || isFirst;
    return isFirst;
}

void QtMainQueue::serve()
{
    if (isHeld())
        m_wakeUp.quiet(); // `resume` rings again
    else
        runSlice();
    if (!isHeld())
        lookAtHeldWatches();
    armDelayTimer();
}

/// Runs jobs for at most one slice. What is left then is served at the event loop's next turn, after whatever else
/// has become ready there; a posted event would be handled in this same turn, before the window's own.
void QtMainQueue::runSlice()
{
    const auto end = SteadyClock::now() + longestSlice;
    while (m_blockers == 0 && refillBatch()) {
        {
            const Running running(*this);
            const Job job = std::move(m_batch[m_next++]);
            job();
        }
        if (SteadyClock::now() >= end) {
            resume();
            return;
        }
    }
}

/// Tells whether there is a job at `m_next`.
bool QtMainQueue::refillBatch()
{
    if (m_next < m_batch.size())
        return true;
    m_batch.clear();
    m_next = 0;
    if (m_batch.capacity() > jobsKeptInMemory)
        m_batch.shrink_to_fit();
    const std::lock_guard lock(m_mutex);
    m_batch.swap(m_incoming);
    m_isWakePending = !m_batch.empty();
    // Not before the jobs, which a touch is among: it need not wait for this. Whoever comes next rings again.
    if (!m_isWakePending)
        m_wakeUp.quiet();
    return m_isWakePending;
}

/// Has the event loop serve the jobs that wait, if there are any: nobody was woken for those that came meanwhile.
void QtMainQueue::resume()
{
    if (isHeld())
        return;
    lookAtHeldWatches();
    const std::lock_guard lock(m_mutex);
    m_isWakePending = m_next < m_batch.size() || !m_incoming.empty();
    if (m_isWakePending)
        m_wakeUp.ring();
}

void QtMainQueue::lookAtHeldWatches()
{
    for (Watch* const watch : std::exchange(m_heldWatches, {}))
        watch->lookAgain();
}

/// What a job holds may hand in another job when it goes.
void QtMainQueue::dropAllJobs()
{
    std::vector<Job> jobs = std::move(m_batch);
    std::vector<DelayedJob> delayed;
    do {
        jobs.clear();
        delayed.clear();
        const std::lock_guard lock(m_mutex);
        jobs.swap(m_incoming);
        delayed.swap(m_delayed);
    } while (!jobs.empty() || !delayed.empty());
}

/// Jobs whose time has come line up even while the queue is held: their turn is that of their time.
void QtMainQueue::moveDueJobs()
{
    const auto now = SteadyClock::now();
    const std::lock_guard lock(m_mutex);
    while (!m_delayed.empty() && m_delayed.front().due <= now) {
        std::pop_heap(m_delayed.begin(), m_delayed.end(), isLater);
        m_incoming.push_back(std::move(m_delayed.back().job));
        m_delayed.pop_back();
    }
    m_isDelayTimerOutdated = true;
}

void QtMainQueue::armDelayTimer()
{
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_isDelayTimerOutdated, false) || m_delayed.empty())
        return;
    m_delayTimer.start(wholeMilliseconds(m_delayed.front().due - SteadyClock::now()));
}

void QtMainQueue::runTick(const Job& tick)
{
    if (!isHeld() && !(m_isTracking && m_isTracking()))
        runNow(tick);
}

void QtMainQueue::runNow(const Job& job)
{
    {
        const Running running(*this);
        job();
    }
    resume();
}

} // namespace companion
