#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion::simulator {

/// Replaces control characters, and all bytes but ASCII of a text that is not UTF-8, by "?".
std::string replaceControls(std::string_view text);

/// Returns what is wrong with a line, or nothing.
using LineReader = std::function<std::optional<std::string>(std::string_view line, int number)>;

/// Calls `read` for each line, counted from 1, without its LF or CRLF. The first problem ends it: "line 2: problem".
/// An empty text has one line.
std::optional<std::string> readLines(std::string_view text, const LineReader& read);

/// Splits at runs of blanks and tabs; leading and trailing ones are ignored.
std::vector<std::string_view> words(std::string_view text);

/// An optional minus, digits, and an optional fraction: the form of a coordinate on the wire.
bool isDecimalNumber(std::string_view text);

/// Decimal digits only, and at most `maximum`.
std::optional<std::uint64_t> parseCount(std::string_view text, std::uint64_t maximum);

} // namespace companion::simulator
