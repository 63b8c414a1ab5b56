#pragma once

#include "platform/Log.h"
#include "platform/posix/LineWriter.h"

namespace companion {

/// The system's log by syslog(3), and standard error as well. Any thread.
///
/// Neither a log daemon that hangs nor a pipe that nobody reads holds up the caller or the other one.
class SyslogLog : public SystemLog {
public:
    /// `identity` is what the lines in the system's log begin with; it must stay for good, like a literal.
    explicit SyslogLog(const char* identity = "panel-companion");

    void log(std::string_view line) override;

private:
    LineWriter m_systemLog;
    LineWriter m_standardError;
};

} // namespace companion
