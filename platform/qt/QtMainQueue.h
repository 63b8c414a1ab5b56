#pragma once

#include "platform/MainQueue.h"
#include "platform/posix/WakeUp.h"

#include <cstdint>
#include <mutex>
#include <vector>

#include <QSocketNotifier>
#include <QTimer>

namespace companion {

/// The main queue on Qt's event loop.
///
/// Made and destroyed on the main thread, after the QCoreApplication and before it; timers go before the queue.
/// Jobs that have not run when it is destroyed are dropped. It holds its jobs itself instead of posting each of
/// them to Qt, since Qt runs posted calls inside the nested event loop of a message box, too.
class QtMainQueue : public MainQueue {
public:
    /// Whether a menu, a pop-up or a dialog is open, so that repeating timers skip their ticks.
    using TrackingPredicate = std::function<bool()>;

    explicit QtMainQueue(TrackingPredicate isTracking = {});
    ~QtMainQueue() override;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    void async(Job job) override;
    void after(std::chrono::nanoseconds delay, Job job) override;
    std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds interval, Job tick) override;
    std::unique_ptr<ReadableWatch> whenReadable(int descriptor, Job job) override;

    /// Destroys the jobs that have not run, and what they hold on to, while that can still go in good order.
    void dropAllJobs();

    /// Called on the main thread when something modal begins to hold up the jobs; may be empty.
    void setWhenBlocked(std::function<void()> whenBlocked) { m_whenBlocked = std::move(whenBlocked); }

    /// Jobs and ticks stand still as long as one of these exists: around everything modal. Main thread only.
    class Blocker {
    public:
        explicit Blocker(QtMainQueue& queue);
        ~Blocker();
        Blocker(const Blocker&) = delete;
        Blocker& operator=(const Blocker&) = delete;

    private:
        QtMainQueue& m_queue;
    };

private:
    using SteadyClock = std::chrono::steady_clock;

    class Running;
    class Timer;
    class Watch;

    struct DelayedJob {
        SteadyClock::time_point due;
        std::uint64_t serial;
        Job job;
    };
    static bool isLater(const DelayedJob& a, const DelayedJob& b);

    bool isHeld() const { return m_blockers > 0 || m_isRunning; }
    void resume();

    bool add(Job job);
    bool addDelayed(SteadyClock::time_point due, Job job);

    void serve();
    void runSlice();
    bool refillBatch();

    void moveDueJobs();
    void armDelayTimer();
    void runTick(const Job& tick);
    void runNow(const Job& job);
    void lookAtHeldWatches();

    TrackingPredicate m_isTracking;
    std::function<void()> m_whenBlocked;

    std::mutex m_mutex;
    std::vector<Job> m_incoming;         ///< Guarded, as the next four.
    std::vector<DelayedJob> m_delayed;   ///< A heap, the earliest first.
    std::uint64_t m_delayedJobs = 0;     ///< Handed in so far: equal due times keep their order.
    bool m_isWakePending = false;        ///< The main thread has been woken, or will look by itself.
    bool m_isDelayTimerOutdated = false; ///< The earliest due time has changed.

    std::vector<Job> m_batch; ///< Main thread only, as all below: jobs being worked off, from `m_next` on.
    std::size_t m_next = 0;
    bool m_isRunning = false;
    int m_blockers = 0;
    std::vector<Watch*>
        m_heldWatches; ///< They have something to read, and are not looked at until the queue is free.

    WakeUp m_wakeUp;
    QSocketNotifier m_notifier;
    QTimer m_delayTimer;
};

} // namespace companion
