#pragma once

#include "platform/Log.h"
#include "platform/posix/LineWriter.h"

namespace companion {

/// Standard output; a reader that is slow holds up nobody. Any thread.
class StdoutConsole : public Console {
public:
    StdoutConsole();

    void print(std::string_view line) override;

private:
    LineWriter m_writer;
};

} // namespace companion
