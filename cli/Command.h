#pragma once

#include "cli/Result.h"

#include <functional>

namespace companion::cli {

/// What a command does about SIGINT, SIGTERM or SIGHUP: nothing of its own, finish with a result, or finish what it owes
/// a panel and be gone soon.
enum class Interruption { endAtOnce, endWithResult, endSoon };

/// One run of a command. Main thread only.
class Command {
public:
    /// Called once. It may not destroy the command.
    using Finished = std::function<void(Result)>;

    virtual ~Command() = default;

    virtual void start(Finished finished) = 0;

    /// One of these signals has come. With `endSoon` it finishes within a few seconds, and the result is not told.
    virtual Interruption interrupt() { return Interruption::endAtOnce; }
};

} // namespace companion::cli
