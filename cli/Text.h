#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace companion::cli {

/// "5 s", "0.25 s": up to three decimals, no zeros at the end.
std::string secondsText(std::chrono::milliseconds time);

/// "[=====>    ]  52 %  1.3 of 2.5 MB" in at most `width` columns; without the bar where there is no room for one.
std::string progressBar(std::uint64_t sent, std::uint64_t total, std::size_t width);

/// "815 bytes", "1.3 kB", "2.5 MB": in units of 1000.
std::string byteText(std::uint64_t bytes);

} // namespace companion::cli
