#pragma once

#include "platform/Log.h"
#include "platform/posix/LineWriter.h"

namespace companion {

/// The system's log by syslog(3), and standard error. Any thread; neither a log daemon that hangs nor a pipe that nobody
/// reads blocks the caller or each other.
class SyslogLog : public SystemLog {
public:
    /// `identity` precedes each line in the system's log; it must outlive the process's last line, like a literal.
    explicit SyslogLog(const char* identity = "panel-companion");

    void log(std::string_view line) override;

private:
    LineWriter m_systemLog;
    LineWriter m_standardError;
};

} // namespace companion
