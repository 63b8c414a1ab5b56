#pragma once

#include <QSocketNotifier>

#include <functional>

namespace companion::simulator {

/// Turns SIGINT and SIGTERM into a call on the event loop. One object at a time, made before any thread, so that all
/// threads inherit what it blocks; main thread.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> onSignal);
    ~TerminationSignals();

private:
    int m_fd;
    QSocketNotifier m_notifier;
};

} // namespace companion::simulator
