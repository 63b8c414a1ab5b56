#pragma once

#include <string>

namespace companion::simulator {

/// One line on standard output for each thing that happens, written at once. Any thread.
///
/// A pipe that nobody reads loses lines and holds nobody up: a panel goes on whether it is watched or not.
class EventLog {
public:
    void write(const std::string& event);
};

} // namespace companion::simulator
