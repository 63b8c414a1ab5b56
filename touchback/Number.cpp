#include "touchback/Number.h"

#include <charconv>

namespace companion {

namespace {

/// Takes the digits off the front; tells whether there were any.
bool skipDigits(std::string_view& text)
{
    std::size_t count = 0;
    while (count < text.size() && text[count] >= '0' && text[count] <= '9')
        ++count;
    text.remove_prefix(count);
    return count > 0;
}

bool skip(std::string_view& text, char c)
{
    if (!text.starts_with(c))
        return false;
    text.remove_prefix(1);
    return true;
}

bool isNumber(std::string_view text)
{
    skip(text, '-');
    if (!skipDigits(text))
        return false;
    if (skip(text, '.') && !skipDigits(text))
        return false;
    return text.empty();
}

} // namespace

std::optional<double> parseNumber(std::string_view text)
{
    // The library's own parser takes "inf", "5." and ".5" too, hence the check before it.
    if (!isNumber(text))
        return std::nullopt;
    double number = 0;
    const auto result =
        std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
    if (result.ec != std::errc())
        return std::nullopt;
    return number;
}

} // namespace companion
