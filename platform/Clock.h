#pragma once

#include <chrono>

namespace companion {

/// Wall-clock time, which may be set back. Any thread.
class Clock {
public:
    virtual ~Clock() = default;

    /// Seconds since 1 January 1970, UTC, with their fraction.
    virtual double secondsSince1970() const = 0;
};

/// Blocks the calling thread.
class Pause {
public:
    virtual ~Pause() = default;

    virtual void pauseFor(std::chrono::microseconds duration) = 0;
};

} // namespace companion
