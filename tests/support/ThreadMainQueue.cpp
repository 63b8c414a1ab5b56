#include "tests/support/ThreadMainQueue.h"

#include <algorithm>
#include <poll.h>
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

class ThreadMainQueue::Watch : public ReadableWatch {
public:
    Watch(ThreadMainQueue& queue, int watched, Job whenReadable)
        : descriptor(watched)
        , job(std::make_shared<const Job>(std::move(whenReadable)))
        , m_queue(queue)
    {
        m_queue.m_watches.push_back(this);
    }
    ~Watch() override { std::erase(m_queue.m_watches, this); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    const int descriptor;
    const std::shared_ptr<const Job> job;

private:
    ThreadMainQueue& m_queue;
};

void ThreadMainQueue::async(Job job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
        ++m_handedIn;
        m_mostPending = std::max(m_mostPending.load(), m_jobs.size());
    }
    m_changed.ring();
}

void ThreadMainQueue::after(std::chrono::nanoseconds delay, Job job)
{
    {
        const std::lock_guard lock(m_mutex);
        m_delayed.emplace(SteadyClock::now() + delay, std::move(job));
    }
    m_changed.ring();
}

std::unique_ptr<RepeatingTimer> ThreadMainQueue::repeat(std::chrono::nanoseconds interval, Job tick)
{
    auto timer = std::make_unique<SharedTick>(std::move(tick));
    scheduleTick(timer->tick, SteadyClock::now() + interval, interval);
    return timer;
}

std::unique_ptr<ReadableWatch> ThreadMainQueue::whenReadable(int descriptor, Job job)
{
    return std::make_unique<Watch>(*this, descriptor, std::move(job));
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

/// Waits for a job, or for something to read, and sees to it; false when nothing came before the deadline, or it is over.
bool ThreadMainQueue::runOne(SteadyClock::time_point deadline)
{
    do {
        if (const Job job = takeJob(deadline)) {
            job();
            return true;
        }
        if (const auto job = waitForWork(deadline)) {
            (*job)();
            return true;
        }
    } while (SteadyClock::now() < deadline);
    return false;
}

MainQueue::Job ThreadMainQueue::takeJob(SteadyClock::time_point deadline)
{
    const std::lock_guard lock(m_mutex);
    moveDueJobs();
    if (m_jobs.empty() || SteadyClock::now() >= deadline)
        return {};
    Job job = std::move(m_jobs.front());
    m_jobs.pop_front();
    return job;
}

/// Until there may be a job to take, or there is something to read, whose job is returned.
std::shared_ptr<const MainQueue::Job> ThreadMainQueue::waitForWork(SteadyClock::time_point deadline)
{
    std::vector<pollfd> descriptors{{m_changed.descriptor(), POLLIN, 0}};
    for (const Watch* const watch : m_watches)
        descriptors.push_back({watch->descriptor, POLLIN, 0});
    auto next = deadline;
    {
        const std::lock_guard lock(m_mutex);
        if (!m_delayed.empty())
            next = std::min(next, m_delayed.begin()->first);
    }
    const auto left = std::max(next - SteadyClock::now(), SteadyClock::duration::zero());
    const auto seconds = std::chrono::floor<std::chrono::seconds>(left);
    const timespec timeout{seconds.count(), (left - seconds).count()};
    if (ppoll(descriptors.data(), descriptors.size(), &timeout, nullptr) <= 0)
        return nullptr;
    m_changed.quiet();
    for (std::size_t i = 1; i < descriptors.size(); ++i) {
        if (descriptors[i].revents != 0)
            return m_watches[i - 1]->job;
    }
    return nullptr;
}

void ThreadMainQueue::moveDueJobs()
{
    while (!m_delayed.empty() && m_delayed.begin()->first <= SteadyClock::now()) {
        m_jobs.push_back(std::move(m_delayed.begin()->second));
        m_delayed.erase(m_delayed.begin());
    }
}

} // namespace companion::testing
