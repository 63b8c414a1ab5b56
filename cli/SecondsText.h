#pragma once

#include <chrono>
#include <string>

namespace companion::cli {

/// "5 s", "0.25 s": up to three decimals, no zeros at the end.
std::string secondsText(std::chrono::milliseconds time);

} // namespace companion::cli
