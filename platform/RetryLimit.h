#pragma once

#include <chrono>
#include <optional>

namespace companion {

/// Limits how often a lost connection is opened again: once a second at most.
class RetryLimit {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Whether it may be tried now, which then counts as tried.
    bool isDue(TimePoint now)
    {
        if (m_lastTry && now - *m_lastTry < std::chrono::seconds(1))
            return false;
        m_lastTry = now;
        return true;
    }

private:
    std::optional<TimePoint> m_lastTry;
};

} // namespace companion
