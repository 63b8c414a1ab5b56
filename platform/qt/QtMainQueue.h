#pragma once

#include "platform/MainQueue.h"

#include <deque>
#include <mutex>
#include <utility>

#include <QObject>
#include <QSocketNotifier>

namespace companion {

/// The main queue on Qt's event loop.
///
/// Made and destroyed on the main thread, after the QCoreApplication and before it; timers go before the queue.
/// Jobs that have not run when it is destroyed are dropped. It holds its jobs itself instead of posting each of
/// them to Qt, since Qt runs posted calls inside the nested event loop of a message box, too.
class QtMainQueue : public MainQueue {
public:
    QtMainQueue();
    ~QtMainQueue() override;
    QtMainQueue(const QtMainQueue&) = delete;
    QtMainQueue& operator=(const QtMainQueue&) = delete;

    void async(Job job) override;
    void after(std::chrono::nanoseconds delay, Job job) override;
    std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds interval, Job tick) override;

    /// Destroys the jobs that have not run, with everything that they hold.
    void dropAllJobs();

    /// Called on the main thread when something modal begins to block the queue; may be empty.
    void setWhenBlocked(std::function<void()> whenBlocked) { m_whenBlocked = std::move(whenBlocked); }

    /// No job or tick runs as long as one of these exists: around everything modal. Main thread only.
    class Blocker {
    public:
        explicit Blocker(QtMainQueue& queue);
        ~Blocker();
        Blocker(const Blocker&) = delete;
        Blocker& operator=(const Blocker&) = delete;

    private:
        QtMainQueue& m_queue;
    };

protected:
    /// Whether a menu or the like is open, so that repeating timers skip their ticks.
    virtual bool isTracking() const { return false; }

private:
    class Timer;

    bool mayRun() const { return m_blockers == 0 && !m_isRunning; }
    void serve();
    void runSlice();
    Job takeJob();
    void resume();
    void runTick(const Job& tick);

    struct Waiting {
        std::mutex mutex;
        std::deque<Job> jobs;
        bool isWakePending = false; ///< The main thread has been woken, or will look by itself.
    };
    Waiting m_waiting;

    // Main thread only.
    std::function<void()> m_whenBlocked;
    bool m_isRunning = false;
    int m_blockers = 0;
    QObject m_delays; ///< Parent of a timer for each delayed job.

    const int m_wakeUp; ///< An eventfd(2); readable when there are jobs to run.
    QSocketNotifier m_notifier;
};

} // namespace companion
