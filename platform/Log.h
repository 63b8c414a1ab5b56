#pragma once

#include <string_view>

namespace companion {

/// The system's log. Any thread.
class SystemLog {
public:
    virtual ~SystemLog() = default;

    /// One line, without its line end.
    virtual void log(std::string_view line) = 0;
};

/// Standard output. Any thread. Never blocks its caller: a pipe that nobody reads loses lines.
class Console {
public:
    virtual ~Console() = default;

    /// One line, without its line end.
    virtual void print(std::string_view line) = 0;
};

} // namespace companion
