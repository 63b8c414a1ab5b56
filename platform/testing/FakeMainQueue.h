#pragma once

#include "platform/MainQueue.h"

#include <algorithm>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

namespace companion::testing {

/// A main queue whose time is moved by the test. Jobs run in `runPending` and `advance`, never by themselves.
class FakeMainQueue : public MainQueue {
public:
    using Duration = std::chrono::nanoseconds;

    void async(Job job) override
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }

    void after(Duration delay, Job job) override
    {
        const std::lock_guard lock(m_mutex);
        m_delayed.push_back({m_now + delay, m_serial++, std::move(job)});
    }

    std::unique_ptr<RepeatingTimer> repeat(Duration interval, Job tick) override
    {
        auto timer = std::make_unique<Timer>(*this);
        m_timers.push_back({timer.get(), interval, m_now + interval, std::move(tick)});
        return timer;
    }

    /// Runs all jobs that are due now, those that they add included.
    void runPending()
    {
        while (Job job = nextJob())
            job();
    }

    /// Moves time on, running jobs and ticks at their own times.
    void advance(Duration duration)
    {
        const Duration end = m_now + duration;
        runPending();
        while (auto next = nextDue(end)) {
            m_now = *next;
            moveDueJobs();
            runPending();
            fireTimersDue();
            runPending();
        }
        m_now = end;
    }

    Duration now() const { return m_now; }
    std::size_t runningTimers() const { return m_timers.size(); }
    bool isIdle() const { return m_jobs.empty() && m_delayed.empty(); }

private:
    class Timer : public RepeatingTimer {
    public:
        explicit Timer(FakeMainQueue& queue)
            : m_queue(queue)
        {
        }
        ~Timer() override
        {
            std::erase_if(m_queue.m_timers, [this](const TimerEntry& entry) { return entry.timer == this; });
        }
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;

    private:
        FakeMainQueue& m_queue;
    };

    struct DelayedJob {
        Duration due;
        int serial;
        Job job;
    };
    struct TimerEntry {
        RepeatingTimer* timer;
        Duration interval;
        Duration due;
        Job tick;
    };

    Job nextJob()
    {
        const std::lock_guard lock(m_mutex);
        if (m_jobs.empty())
            return {};
        Job job = std::move(m_jobs.front());
        m_jobs.pop_front();
        return job;
    }

    std::optional<Duration> nextDue(Duration end)
    {
        std::optional<Duration> next;
        const auto consider = [&](Duration due) {
            if (due <= end && (!next || due < *next))
                next = due;
        };
        for (const DelayedJob& delayed : m_delayed)
            consider(delayed.due);
        for (const TimerEntry& entry : m_timers)
            consider(entry.due);
        return next;
    }

    void moveDueJobs()
    {
        std::sort(m_delayed.begin(), m_delayed.end(), [](const DelayedJob& a, const DelayedJob& b) {
            return std::pair(a.due, a.serial) < std::pair(b.due, b.serial);
        });
        while (!m_delayed.empty() && m_delayed.front().due <= m_now) {
            m_jobs.push_back(std::move(m_delayed.front().job));
            m_delayed.erase(m_delayed.begin());
        }
    }

    void fireTimersDue()
    {
        std::vector<Job> ticks;
        for (TimerEntry& entry : m_timers) {
            if (entry.due > m_now)
                continue;
            entry.due += entry.interval;
            ticks.push_back(entry.tick);
        }
        for (const Job& tick : ticks)
            tick();
    }

    std::mutex m_mutex;
    std::deque<Job> m_jobs;
    std::vector<DelayedJob> m_delayed;
    std::vector<TimerEntry> m_timers;
    Duration m_now = Duration::zero();
    int m_serial = 0;
};

} // namespace companion::testing
