#pragma once

#include "cli/Json.h"
#include "cli/Output.h"

#include <functional>
#include <string>

namespace companion::cli {

/// The exit status of `panelctl`. A failed check of `doctor` counts as a refusal, standard output that cannot be written
/// as bad usage.
enum class ExitStatus { done = 0, refused = 1, badUsage = 2, noPanel = 3, network = 4 };

/// How a command ended.
struct Result {
    ExitStatus status = ExitStatus::done;
    std::string text; ///< One line for people: what was done, or why not. "" when nothing is left to say.
    Json json = {};   ///< The same for programs: an object, or null when there is nothing to add.
};

/// Prints the result: success to standard output, a failure to standard error. With `isJson` it prints an object of the
/// command's name, its exit status, the error (null when there is none) and the result's own members.
void report(const Result& result, const std::string& command, bool isJson, Output& output);

/// How a command responds to SIGINT, SIGTERM or SIGHUP: it lets the process end, finishes with a result, or first sends
/// a last request to the panel.
enum class Interruption { endAtOnce, endWithResult, endSoon };

/// One run of a command. Main thread only. Its jobs on the main queue and its requests must be dropped before it is destroyed.
class Command {
public:
    /// Called once. It may not destroy the command.
    using Finished = std::function<void(Result)>;

    virtual ~Command() = default;

    virtual void start(Finished finished) = 0;

    /// Called on one of these signals. With `endSoon` it finishes within a few seconds, and the result is not printed.
    virtual Interruption interrupt() { return Interruption::endAtOnce; }
};

} // namespace companion::cli
