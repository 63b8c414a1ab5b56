#pragma once

#include <chrono>
#include <functional>

#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

/// Handles events until `condition` holds or the time is over; tells whether it holds.
inline bool spinUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout = 20s)
{
    const auto deadline = SteadyClock::now() + timeout;
    QTimer heartbeat; // so that waiting for events always ends
    heartbeat.start(5ms);
    while (!condition() && SteadyClock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return condition();
}

/// Handles events for so long.
inline void spinFor(std::chrono::milliseconds duration)
{
    spinUntil([] { return false; }, duration);
}

/// Keeps the main thread from its events for so long.
inline void beBusyFor(std::chrono::nanoseconds duration)
{
    const auto end = SteadyClock::now() + duration;
    while (SteadyClock::now() < end) { }
}

} // namespace companion::testing
