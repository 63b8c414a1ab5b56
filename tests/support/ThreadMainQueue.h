#pragma once

#include "platform/MainQueue.h"
#include "platform/posix/WakeUp.h"

#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <vector>

namespace companion::testing {

/// A main queue in real time whose main thread is the test's own, while it is in `runUntil` or `runFor`.
class ThreadMainQueue : public MainQueue {
public:
    using SteadyClock = std::chrono::steady_clock;

    void async(Job job) override;
    void after(std::chrono::nanoseconds delay, Job job) override;
    std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds interval, Job tick) override;
    std::unique_ptr<ReadableWatch> whenReadable(int descriptor, Job job) override;

    /// Runs jobs until `condition`, looked at after each of them, holds; tells whether it did in time.
    bool runUntil(
        const std::function<bool()>& condition, std::chrono::nanoseconds timeout = std::chrono::seconds(10));

    void runFor(std::chrono::nanoseconds duration);

    /// The jobs that wait, and the most that ever did.
    std::size_t pending() const;
    std::size_t mostPending() const { return m_mostPending; }

    /// The jobs that have been handed in so far by `async`.
    std::size_t handedIn() const { return m_handedIn; }

private:
    class Watch;

    bool runOne(SteadyClock::time_point deadline);
    Job takeJob(SteadyClock::time_point deadline);
    std::shared_ptr<const Job> waitForWork(SteadyClock::time_point deadline);
    void moveDueJobs();
    void scheduleTick(
        std::weak_ptr<Job> tick, SteadyClock::time_point due, std::chrono::nanoseconds interval);

    mutable std::mutex m_mutex;
    WakeUp m_changed;
    std::deque<Job> m_jobs;
    std::multimap<SteadyClock::time_point, Job> m_delayed;
    std::atomic<std::size_t> m_mostPending = 0;
    std::atomic<std::size_t> m_handedIn = 0;
    std::vector<Watch*> m_watches;
};

} // namespace companion::testing
