#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace companion {

/// A running timer; no tick comes after it is destroyed. Main thread only.
class RepeatingTimer {
public:
    virtual ~RepeatingTimer() = default;
};

/// The main thread's work: first in, first out, one job at a time, never re-entered.
///
/// Anything modal (an alert, a file chooser) blocks it: jobs wait until it is closed and then run in order.
class MainQueue {
public:
    using Job = std::function<void()>;

    virtual ~MainQueue() = default;

    /// Runs `job` on the main thread after all jobs that were handed in before. Any thread.
    virtual void async(Job job) = 0;

    /// Runs `job` on the main thread once `delay` is over. Any thread.
    virtual void after(std::chrono::nanoseconds delay, Job job) = 0;

    /// Calls `tick` every `interval`, the first time one interval from now, until the timer is destroyed.
    /// A tick that would fall into an alert, a menu or a pop-up is dropped; the rhythm stays. Main thread only.
    virtual std::unique_ptr<RepeatingTimer> repeat(std::chrono::nanoseconds interval, Job tick) = 0;
};

} // namespace companion
