#include "discovery/PanelName.h"

#include "platform/Text.h"

#include <algorithm>

namespace companion {

namespace {

constexpr std::array<std::string_view, 3> modelKeywords{"Meridian", "Halcyon-X", "Tandem"};

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

constexpr std::string_view halfAPair = "\xEF\xBF\xBD"; // the replacement character

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
    const std::string folded = asciiLowerCase(model);
    return std::any_of(modelKeywords.begin(), modelKeywords.end(), [&folded](std::string_view keyword) {
        return folded.find(asciiLowerCase(keyword)) != std::string::npos;
    });
}

std::optional<std::array<std::string, 4>> hexArrayFromString(std::string_view address)
{
    std::array<std::string, 8> units;
    for (std::size_t unit = 0; unit < units.size(); ++unit) {
        if (address.empty())
            return std::nullopt;
        const std::size_t length = characterLength(address);
        units[unit] = address.substr(0, length);
        const bool isPair = length == 4;
        if (isPair && ++unit < units.size() && unit % 2 == 0)
            units[unit] = halfAPair; // the other half is in the piece before
        address.remove_prefix(length);
    }
    return std::array{units[0] + units[1], units[2] + units[3], units[4] + units[5], units[6] + units[7]};
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
    // As far as digits go; what is none counts as 0.
    return static_cast<std::uint32_t>(std::strtoul(std::string(text).c_str(), nullptr, 16));
}

} // namespace companion
