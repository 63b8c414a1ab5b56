#include "discovery/PanelName.h"

#include "platform/Text.h"

#include <algorithm>

namespace companion {

namespace {

constexpr std::array<std::string_view, 3> modelKeywords{"Meridian", "Halcyon-X", "Tandem"};

// The C library's own functions of this kind depend on the user's locale.
bool isSpace(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::optional<std::uint32_t> hexDigit(char c)
{
    c = asciiLowerCase(c);
    if (c >= '0' && c <= '9')
        return static_cast<std::uint32_t>(c - '0');
    if (c >= 'a' && c <= 'f')
        return static_cast<std::uint32_t>(c - 'a' + 10);
    return std::nullopt;
}

bool startsWithHexDigit(std::string_view text)
{
    return !text.empty() && hexDigit(text.front());
}

/// The text up to the next bar, which is taken off `rest` together with the bar; nothing at the end.
std::optional<std::string_view> takeComponent(std::optional<std::string_view>& rest)
{
    if (!rest)
        return std::nullopt;
    const std::size_t bar = rest->find('|');
    const std::string_view component = rest->substr(0, bar);
    if (bar == std::string_view::npos)
        rest.reset();
    else
        rest->remove_prefix(bar + 1);
    return component;
}

/// The length in bytes that this first byte of a UTF-8 sequence promises (RFC 3629).
std::size_t promisedLength(unsigned char first)
{
    if (first >= 0xC2 && first <= 0xDF)
        return 2;
    if (first >= 0xE0 && first <= 0xEF)
        return 3;
    return first >= 0xF0 && first <= 0xF4 ? 4 : 1;
}

/// The length in bytes of the first character of a text that is not empty.
std::size_t characterLength(std::string_view text)
{
    const std::size_t length = promisedLength(static_cast<unsigned char>(text.front()));
    if (text.size() < length)
        return 1;
    const std::string_view continuation = text.substr(1, length - 1);
    const bool isWhole = std::all_of(continuation.begin(), continuation.end(),
        [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; });
    return isWhole ? length : 1;
}

bool containsInAnyCase(std::string_view text, std::string_view keyword)
{
    const auto found = std::search(text.begin(), text.end(), keyword.begin(), keyword.end(),
        [](char a, char b) { return asciiLowerCase(a) == asciiLowerCase(b); });
    return found != text.end();
}

} // namespace

std::optional<PanelName> parsePanelName(std::string_view serviceName)
{
    std::optional<std::string_view> rest = serviceName;
    const auto model = takeComponent(rest);
    const auto name = takeComponent(rest);
    const auto hex = takeComponent(rest);
    if (!hex)
        return std::nullopt;
    const auto pieces = hexArrayFromString(*hex);
    if (!pieces)
        return std::nullopt;
    return PanelName{std::string(*model), std::string(*name), std::string(*hex),
        formattedStringFromAddressComponents(*pieces)};
}

bool namesSupportedModel(std::string_view model)
{
    return std::any_of(modelKeywords.begin(), modelKeywords.end(),
        [model](std::string_view keyword) { return model.find(keyword) != std::string_view::npos; });
}

bool namesSupportedModelInAnyCase(std::string_view model)
{
    return std::any_of(modelKeywords.begin(), modelKeywords.end(),
        [model](std::string_view keyword) { return containsInAnyCase(model, keyword); });
}

std::optional<std::array<std::string, 4>> hexArrayFromString(std::string_view address)
{
    std::array<std::string, 4> pieces;
    for (std::size_t character = 0; character < 8; ++character) {
        if (address.empty())
            return std::nullopt;
        const std::size_t length = characterLength(address);
        pieces[character / 2] += address.substr(0, length);
        address.remove_prefix(length);
    }
    return pieces;
}

std::string formattedStringFromAddressComponents(const std::array<std::string, 4>& components)
{
    std::string text;
    for (const std::string& component : components) {
        if (&component != &components.front())
            text += '.';
        text += std::to_string(static_cast<std::int32_t>(hexValue(component)));
    }
    return text;
}

std::uint32_t hexValue(std::string_view text)
{
    while (!text.empty() && isSpace(text.front()))
        text.remove_prefix(1);

    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);

    std::uint32_t value = 0;
    for (; startsWithHexDigit(text); text.remove_prefix(1))
        value = value * 16 + *hexDigit(text.front());
    return isNegative ? 0 - value : value;
}

} // namespace companion
