#include "platform/posix/SyslogLog.h"

#include "platform/posix/SystemLogSocket.h"

#include <algorithm>
#include <memory>
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

/// Tells how many bytes of whole lines went out.
std::size_t sendWithoutWaiting(SystemLogSocket& socket, std::string_view lines)
{
    std::size_t sent = 0;
    while (sent < lines.size()) {
        const std::size_t length = std::min(lines.find('\n', sent), lines.size()) - sent;
        if (!socket.send(lines.substr(sent, length)))
            break;
        sent = std::min(sent + length + 1, lines.size());
    }
    return sent;
}

LineSink systemLogSink(const char* identity)
{
    openlog(identity, LOG_PID, LOG_USER);
    const auto socket = std::make_shared<SystemLogSocket>(identity);
    return {sendToSystemLog, [socket](std::string_view lines) { return sendWithoutWaiting(*socket, lines); }};
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
