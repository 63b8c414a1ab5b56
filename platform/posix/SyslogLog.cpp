#include "platform/posix/SyslogLog.h"

#include <syslog.h>
#include <unistd.h>

namespace companion {

namespace {

/// One message per line. syslog(3) blocks while the daemon's socket is full.
void sendToSystemLog(std::string_view lines)
{
    while (!lines.empty()) {
        const std::size_t length = lines.find('\n');
        syslog(LOG_NOTICE, "%.*s", static_cast<int>(length), lines.data());
        lines.remove_prefix(length + 1);
    }
}

LineWriter::Sink systemLogSink(const char* identity)
{
    openlog(identity, LOG_PID, LOG_USER);
    return sendToSystemLog;
}

} // namespace

SyslogLog::SyslogLog(const char* identity)
    : m_systemLog(systemLogSink(identity))
    , m_standardError(descriptorSink(STDERR_FILENO))
{
}

void SyslogLog::log(std::string_view line)
{
    m_systemLog.write(line);
    m_standardError.write(line);
}

} // namespace companion
