#pragma once

#include <string>
#include <string_view>

namespace companion {

/// Messages to the system's log without waiting for its daemon, which syslog(3) cannot do: one datagram each to
/// /dev/log, in the form of RFC 3164 as syslog(3) sends it to the daemon of its own computer. One thread at a time.
class SystemLogSocket {
public:
    explicit SystemLogSocket(std::string identity);
    ~SystemLogSocket();
    SystemLogSocket(const SystemLogSocket&) = delete;
    SystemLogSocket& operator=(const SystemLogSocket&) = delete;

    /// Sends `line`, one without its end, with facility "user" and severity "notice". False where syslog(3) may do
    /// better: the daemon is behind, or listens in another way. Without a daemon the line goes nowhere, as with
    /// syslog(3).
    bool send(std::string_view line);

private:
    int trySend(std::string_view message);
    int connectToDaemon();

    const std::string m_identity;
    int m_socket = -1;
};

} // namespace companion
