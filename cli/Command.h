#pragma once

#include "cli/Json.h"
#include "cli/Output.h"

#include <functional>
#include <string>

namespace companion::cli {

/// What `panelctl` ends with, for scripts to go by. A check of `doctor` that failed counts as a refusal, standard output
/// that cannot be written as bad usage.
enum class ExitStatus { done = 0, refused = 1, badUsage = 2, noPanel = 3, network = 4 };

/// What came of a command.
struct Result {
    ExitStatus status = ExitStatus::done;
    std::string text; ///< One line for people: what was done, or why not. "" when nothing is left to say.
    Json json = {};   ///< The same for programs: an object, or null when there is nothing to add.
};

/// Tells the result: what was done on standard output, a failure on standard error. With `isJson` an object of the
/// command's name, its exit status, the error (null when there is none) and the result's own members is printed.
void report(const Result& result, const std::string& command, bool isJson, Output& output);

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
