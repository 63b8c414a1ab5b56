#pragma once

#include <string>
#include <string_view>

namespace companion {

/// What a user is told about the fatal error that ended the run before this one: a sentence about `what`, the text that
/// `fatalError` was called with, and what to do.
std::string stopReason(std::string_view what);

} // namespace companion
