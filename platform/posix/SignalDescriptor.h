#pragma once

#include <csignal>
#include <initializer_list>
#include <map>
#include <optional>

namespace companion {

/// While the object lives, the signals do not end the program but make a file descriptor readable, so that an event loop
/// can shut the program down in order.
///
/// One object per process at a time. A signal that was ignored stays ignored (as for programs started by nohup).
class SignalDescriptor {
public:
    /// Throws std::system_error if no pipe can be opened, std::logic_error for a second object.
    explicit SignalDescriptor(std::initializer_list<int> signals = {SIGINT, SIGTERM, SIGHUP});

    ~SignalDescriptor(); ///< Restores the previous signal actions.
    SignalDescriptor(const SignalDescriptor&) = delete;
    SignalDescriptor& operator=(const SignalDescriptor&) = delete;

    /// Readable when a signal has arrived. To be waited on, not read from.
    int fd() const { return m_readFd; }

    /// Whether a signal has arrived that has not been taken. Any thread in any state.
    bool isWaiting() const;

    /// The next signal, in order of arrival; nothing if there is none. Never blocks.
    std::optional<int> take();

private:
    void openPipe();
    void handle(int signal);

    int m_readFd = -1;
    int m_writeFd = -1;
    std::map<int, struct sigaction> m_before;
};

} // namespace companion
