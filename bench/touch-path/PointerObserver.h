#pragma once

#include <chrono>
#include <optional>
#include <string>

struct _XDisplay;

namespace companion::bench {

/// The other program: a window over the whole screen that is told of pointer motions.
class PointerObserver {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    struct Motion {
        int x = 0;
        int y = 0;
    };

    explicit PointerObserver(const std::string& display);
    ~PointerObserver();
    PointerObserver(const PointerObserver&) = delete;
    PointerObserver& operator=(const PointerObserver&) = delete;

    /// The next motion, waited for until the deadline.
    std::optional<Motion> next(TimePoint deadline);

private:
    _XDisplay* m_display;
};

} // namespace companion::bench
