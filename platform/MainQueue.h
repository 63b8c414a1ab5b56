#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace companion {

/// A running timer; destroying it invalidates it, after which no tick comes any more. Main thread only.
class RepeatingTimer {
public:
    virtual ~RepeatingTimer() = default;
};

/// A descriptor that is being looked at; destroying it ends that, also from within its job. Main thread only.
class ReadableWatch {
public:
    virtual ~ReadableWatch() = default;
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

    /// Runs `job` between two other jobs whenever there is something to read from the descriptor, again and again until
    /// it is read or the watch is destroyed, which must be before the descriptor is closed. Main thread only.
    virtual std::unique_ptr<ReadableWatch> whenReadable(int descriptor, Job job) = 0;
};

} // namespace companion
