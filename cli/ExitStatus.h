#pragma once

namespace companion::cli {

/// What `panelctl` ends with, for scripts to go by. A check of `doctor` that failed counts as a refusal, standard output
/// that cannot be written as bad usage.
enum class ExitStatus { done = 0, refused = 1, badUsage = 2, noPanel = 3, network = 4 };

} // namespace companion::cli
