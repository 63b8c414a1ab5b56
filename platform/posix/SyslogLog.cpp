#include "platform/posix/SyslogLog.h"

#include <algorithm>
#include <syslog.h>
#include <unistd.h>

namespace companion {

namespace {

void sendToSystemLog(std::string_view lines)
{
    while (!lines.empty()) {
        const std::size_t length = std::min(lines.find('\n'), lines.size());
        syslog(LOG_NOTICE, "%.*s", static_cast<int>(length), lines.data());
        lines.remove_prefix(std::min(length + 1, lines.size()));
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
