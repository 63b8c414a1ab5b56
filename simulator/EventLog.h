#pragma once

#include "platform/posix/StdoutConsole.h"

#include <string>

namespace companion::simulator {

/// Writes one line to standard output for each event. Any thread.
class EventLog {
public:
    void write(const std::string& event) { m_console.print("panel-simulator: " + event); }

private:
    StdoutConsole m_console;
};

} // namespace companion::simulator
