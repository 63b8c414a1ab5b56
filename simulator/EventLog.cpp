#include "simulator/EventLog.h"

#include "simulator/Text.h"

#include <limits.h>
#include <poll.h>
#include <unistd.h>

namespace companion::simulator {

void EventLog::write(const std::string& event)
{
    // A pipe that is ready takes PIPE_BUF bytes in one piece (pipe(7)), so lines of several threads do not mix.
    std::string line = "panel-simulator: ";
    line += cutAtCharacter(printable(event), PIPE_BUF - line.size() - 1);
    line += '\n';
    pollfd output{STDOUT_FILENO, POLLOUT, 0};
    if (poll(&output, 1, 0) == 1)
        static_cast<void>(!::write(STDOUT_FILENO, line.data(), line.size()));
}

} // namespace companion::simulator
