#pragma once

#include <csignal>
#include <initializer_list>
#include <map>
#include <optional>

namespace companion {

/// Signals as something to read: while the object lives, they end the program no more but make a file descriptor
/// readable, so that an event loop can end the program in its own order.
///
/// One object in a process at a time. A signal that was ignored stays ignored (as for programs started by nohup).
class SignalDescriptor {
public:
    /// Throws std::system_error when there is no pipe to be had, std::logic_error for a second object.
    explicit SignalDescriptor(std::initializer_list<int> signals = {SIGINT, SIGTERM, SIGHUP});

    ~SignalDescriptor(); ///< Gives the signals back what they did before.
    SignalDescriptor(const SignalDescriptor&) = delete;
    SignalDescriptor& operator=(const SignalDescriptor&) = delete;

    /// Readable when a signal has come. For waiting on, not for reading from.
    int fd() const { return m_readFd; }

    /// The next signal that has come, in order; nothing when there is none. Never waits.
    std::optional<int> take();

private:
    void openPipe();
    void handle(int signal);

    int m_readFd = -1;
    int m_writeFd = -1;
    std::map<int, struct sigaction> m_before;
};

} // namespace companion
