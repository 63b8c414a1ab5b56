#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace companion {

/// Whether `text` is UTF-8 from end to end, strictly as in RFC 3629: no overlong forms, no surrogates, nothing
/// beyond U+10FFFF. Any thread; allocates nothing.
bool isValidUtf8(std::string_view text);

/// `text` with U+FFFD in place of what is not UTF-8: one for each byte that starts no sequence, one for each truncated
/// sequence (the "maximal subpart" of the Unicode Standard, section 3.9, as in the WHATWG Encoding Standard).
/// Never fails. Any thread.
std::string lenientUtf8(std::string_view text);

/// The longest prefix of at most `maxBytes` bytes that splits no UTF-8 character.
std::string_view cutAtCharacter(std::string_view text, std::size_t maxBytes);

/// `text` as a terminal or a log can safely show it on one line: control characters except the tab, bidirectional
/// formatting characters (UAX #9) and bytes that are not UTF-8 are escaped ("\n", "\x1b", "\u202e"). Text longer than
/// `maxBytes` is cut and ends in "...".
std::string printable(std::string_view text, std::size_t maxBytes = std::string_view::npos);

/// Independent of the locale, unlike std::tolower.
constexpr char asciiLowerCase(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string asciiLowerCase(std::string_view text);

} // namespace companion
