#include "touchback/Number.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace companion {

namespace {

bool areDigits(std::string_view text)
{
    return !text.empty()
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

/// Panels send whole numbers, of which so short ones are exact without any rounding: a quarter of the work.
std::optional<double> shortWholeNumber(std::string_view text)
{
    constexpr std::size_t mostDigits = 15;
    if (text.empty() || text.size() > mostDigits)
        return std::nullopt;
    std::int64_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        number = number * 10 + (c - '0');
    }
    return static_cast<double>(number);
}

} // namespace

std::optional<double> parseNumber(std::string_view text)
{
    if (const auto number = shortWholeNumber(text))
        return number;
    // The library's function alone would accept "inf", "nan", ".5" and "5.", too.
    const std::string_view magnitude = text.substr(text.starts_with('-') ? 1 : 0);
    const std::string_view whole = magnitude.substr(0, magnitude.find('.'));
    const bool hasFraction = whole.size() < magnitude.size();
    if (!areDigits(whole) || (hasFraction && !areDigits(magnitude.substr(whole.size() + 1))))
        return std::nullopt;

    double number = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (result.ec == std::errc())
        return number;
    const bool isTooSmall = whole.find_first_not_of('0') == std::string_view::npos;
    return isTooSmall ? std::optional(0.0) : std::nullopt;
}

} // namespace companion
