#pragma once

#include <chrono>
#include <optional>

namespace companion::bench {

/// The other program: a window over the whole screen that is told of pointer motions.
class PointerObserver {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Motion {
        int x = 0;
        int y = 0;
    };

    virtual ~PointerObserver() = default;

    /// The next motion, waited for until the deadline.
    virtual std::optional<Motion> next(TimePoint deadline) = 0;

protected:
    /// Whether that much arrived before the deadline.
    static bool waitReadable(int fd, TimePoint deadline);
};

} // namespace companion::bench
