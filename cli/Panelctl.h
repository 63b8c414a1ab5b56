#pragma once

#include "cli/Options.h"

namespace companion::cli {

/// Runs one command with the adapters that it needs, prints its result and returns the process's exit status. Needs a
/// QCoreApplication; main thread only. Ends the process by itself if a library call never returned.
int runCommand(const Options& options);

} // namespace companion::cli
