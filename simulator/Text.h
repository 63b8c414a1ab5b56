#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion::simulator {

bool isUtf8(std::string_view text);

/// The longest beginning of `text` of at most `maxBytes` bytes that cuts no UTF-8 character in two.
std::string_view cutAtCharacter(std::string_view text, std::size_t maxBytes);

/// For a line of output: control characters and what is not UTF-8 become "?".
std::string printable(std::string_view text);

/// Cuts at runs of blanks and tabs; leading and trailing ones count for nothing.
std::vector<std::string_view> words(std::string_view text);

/// An optional minus, digits, and an optional fraction: what a coordinate on the wire looks like.
bool isDecimalNumber(std::string_view text);

/// Decimal digits only, and at most `maximum`.
std::optional<std::uint64_t> parseCount(std::string_view text, std::uint64_t maximum);

} // namespace companion::simulator
