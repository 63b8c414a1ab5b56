#include "touchback/Number.h"

#include <charconv>
#include <cstddef>
#include <cstdint>

namespace companion {

namespace {

constexpr double powersOfTen[] = {
    1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15};

/// Up to here a number's digits, taken as a whole, and the power of ten that they are divided by are both exact as
/// doubles, so that the one division rounds correctly.
constexpr std::size_t exactDigits = 15;

/// Takes the digits off the front and appends them to `value`, which wraps beyond 19 of them; tells how many.
std::size_t takeDigits(std::string_view& text, std::uint64_t& value)
{
    std::size_t count = 0;
    for (; count < text.size(); ++count) {
        const unsigned digit = static_cast<unsigned char>(text[count]) - unsigned{'0'}; // wraps below '0'
        if (digit > 9)
            break;
        value = value * 10 + digit;
    }
    text.remove_prefix(count);
    return count;
}

bool take(std::string_view& text, char c)
{
    if (text.empty() || text.front() != c)
        return false;
    text.remove_prefix(1);
    return true;
}

/// A text that is known to be a number, of any length.
std::optional<double> parseLongNumber(std::string_view text)
{
    double number = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (result.ec == std::errc())
        return number;
    const bool isTooSmall = text.substr(0, text.find('.')).find_first_not_of("-0") == std::string_view::npos;
    return isTooSmall ? std::optional(0.0) : std::nullopt;
}

} // namespace

std::optional<double> parseNumber(std::string_view text)
{
    std::string_view rest = text;
    const bool isNegative = take(rest, '-');
    std::uint64_t digits = 0;
    const std::size_t wholeDigits = takeDigits(rest, digits);
    if (wholeDigits == 0)
        return std::nullopt;
    const bool hasFraction = take(rest, '.');
    const std::size_t fractionDigits = hasFraction ? takeDigits(rest, digits) : 0;
    if (!rest.empty() || (hasFraction && fractionDigits == 0))
        return std::nullopt;

    if (wholeDigits + fractionDigits > exactDigits)
        return parseLongNumber(text);
    const double magnitude = static_cast<double>(digits) / powersOfTen[fractionDigits];
    return isNegative ? -magnitude : magnitude;
}

} // namespace companion
