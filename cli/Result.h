#pragma once

#include "cli/ExitStatus.h"
#include "cli/Json.h"
#include "cli/Output.h"

#include <string>

namespace companion::cli {

/// What came of a command.
struct Result {
    ExitStatus status = ExitStatus::done;
    std::string text; ///< One line for people: what was done, or why not. "" when nothing is left to say.
    JsonObject json;  ///< The same for programs.
};

/// Tells the result: what was done on standard output, a failure on standard error. With `isJson` an object of the
/// command's name, its exit status, the error (null when there is none) and the result's own members is printed.
void report(const Result& result, const std::string& command, bool isJson, Output& output);

} // namespace companion::cli
