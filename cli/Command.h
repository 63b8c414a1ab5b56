#pragma once

#include "cli/Result.h"

#include <functional>

namespace companion::cli {

/// One run of a command. Main thread only.
class Command {
public:
    /// Called once. It may not destroy the command.
    using Finished = std::function<void(Result)>;

    virtual ~Command() = default;

    virtual void start(Finished finished) = 0;

    /// SIGINT, SIGTERM or SIGHUP has come. False when the command has no way of its own to end.
    virtual bool interrupt() { return false; }
};

} // namespace companion::cli
