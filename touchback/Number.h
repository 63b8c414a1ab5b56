#pragma once

#include <optional>
#include <string_view>

namespace companion {

/// The number that the whole of `text` is: an optional minus, at least one digit, and optionally a "." with at
/// least one digit behind it, whatever the locale. Nothing for any other text (no plus, blank, exponent, hexadecimal
/// or word), nor for a number that a double is too small to hold. Any thread; allocates nothing.
std::optional<double> parseNumber(std::string_view text);

} // namespace companion
