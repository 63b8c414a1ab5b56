#include "platform/posix/StdoutConsole.h"

#include <unistd.h>

namespace companion {

StdoutConsole::StdoutConsole()
    : m_writer(descriptorSink(STDOUT_FILENO))
{
}

void StdoutConsole::print(std::string_view line)
{
    m_writer.write(line);
}

} // namespace companion
