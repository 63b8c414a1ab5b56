#pragma once

#include "platform/MainQueue.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>

namespace companion::testing {

/// A main queue in real time whose main thread is the test's own, while it is in `runUntil` or `runFor`.
class ThreadMainQueue : public MainQueue {
public:
    using SteadyClock = std::chrono::steady_clock;

    void async(Job job) override;
    void after(std::chrono::nanoseconds delay, Job job) override;
    std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds interval, Job tick) override;

    /// Runs jobs until `condition`, checked after each of them, holds; false if it did not in time.
    bool runUntil(
        const std::function<bool()>& condition, std::chrono::nanoseconds timeout = std::chrono::seconds(10));

    void runFor(std::chrono::nanoseconds duration);

    /// The jobs that wait, and the most that ever did.
    std::size_t pending() const;
    std::size_t mostPending() const { return m_mostPending; }

private:
    bool runOne(SteadyClock::time_point deadline);
    Job takeJob(SteadyClock::time_point deadline);
    void moveDueJobs();
    void scheduleTick(
        std::weak_ptr<Job> tick, SteadyClock::time_point due, std::chrono::nanoseconds interval);

    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Job> m_jobs;
    std::multimap<SteadyClock::time_point, Job> m_delayed;
    std::atomic<std::size_t> m_mostPending = 0;
};

} // namespace companion::testing
