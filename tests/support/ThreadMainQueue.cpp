#include "tests/support/ThreadMainQueue.h"

#include <algorithm>
#include <utility>

namespace companion::testing {

namespace {

class SharedTick : public RepeatingTimer {
public:
    explicit SharedTick(MainQueue::Job job)
        : tick(std::make_shared<MainQueue::Job>(std::move(job)))
    {
    }

    const std::shared_ptr<MainQueue::Job> tick;
};

} // namespace

void ThreadMainQueue::async(Job job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
        m_mostPending = std::max(m_mostPending.load(), m_jobs.size());
    }
    m_changed.notify_one();
}

void ThreadMainQueue::after(std::chrono::nanoseconds delay, Job job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_delayed.emplace(SteadyClock::now() + delay, std::move(job));
    }
    m_changed.notify_one();
}

std::unique_ptr<RepeatingTimer> ThreadMainQueue::repeat(std::chrono::nanoseconds interval, Job tick)
{
    auto timer = std::make_unique<SharedTick>(std::move(tick));
    scheduleTick(timer->tick, SteadyClock::now() + interval, interval);
    return timer;
}

void ThreadMainQueue::scheduleTick(
    std::weak_ptr<Job> tick, SteadyClock::time_point due, std::chrono::nanoseconds interval)
{
    after(due - SteadyClock::now(), [this, tick, due, interval] {
        if (const auto job = tick.lock()) {
            (*job)();
            scheduleTick(tick, due + interval, interval);
        }
    });
}

bool ThreadMainQueue::runUntil(const std::function<bool()>& condition, std::chrono::nanoseconds timeout)
{
    const auto deadline = SteadyClock::now() + timeout;
    while (!condition()) {
        if (!runOne(deadline))
            return condition();
    }
    return true;
}

void ThreadMainQueue::runFor(std::chrono::nanoseconds duration)
{
    runUntil([] { return false; }, duration);
}

std::size_t ThreadMainQueue::pending() const
{
    const std::lock_guard lock(m_mutex);
    return m_jobs.size();
}

bool ThreadMainQueue::runOne(SteadyClock::time_point deadline)
{
    const Job job = takeJob(deadline);
    if (job)
        job();
    return job != nullptr;
}

/// Waits for a job; none if none came before the deadline.
MainQueue::Job ThreadMainQueue::takeJob(SteadyClock::time_point deadline)
{
    std::unique_lock lock(m_mutex);
    while (SteadyClock::now() < deadline) {
        moveDueJobs();
        if (!m_jobs.empty()) {
            Job job = std::move(m_jobs.front());
            m_jobs.pop_front();
            return job;
        }
        m_changed.wait_until(
            lock, m_delayed.empty() ? deadline : std::min(deadline, m_delayed.begin()->first));
    }
    return {};
}

void ThreadMainQueue::moveDueJobs()
{
    while (!m_delayed.empty() && m_delayed.begin()->first <= SteadyClock::now()) {
        m_jobs.push_back(std::move(m_delayed.begin()->second));
        m_delayed.erase(m_delayed.begin());
    }
}

} // namespace companion::testing
