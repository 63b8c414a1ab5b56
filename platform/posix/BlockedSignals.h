#pragma once

#include <csignal>

namespace companion {

/// Blocks all signals in threads that are started while it lives: signals are for the main thread.
class BlockedSignals {
public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t m_before;
};

} // namespace companion
