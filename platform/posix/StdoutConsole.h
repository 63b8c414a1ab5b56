#pragma once

#include "platform/Log.h"
#include "platform/posix/LineWriter.h"

#include <unistd.h>

namespace companion {

/// Standard output. Any thread; a slow reader blocks nobody.
class StdoutConsole : public Console {
public:
    void print(std::string_view line) override { m_writer.write(line); }

private:
    LineWriter m_writer{descriptorSink(STDOUT_FILENO)};
};

} // namespace companion
