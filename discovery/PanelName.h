#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace companion {

/// What a panel's Bonjour instance name "model|name|address" says.
struct PanelName {
    std::string model;
    std::string name;
    std::string hex; ///< The address as announced: at least eight characters, the first eight of which count.
    std::string ip;  ///< The address in dotted decimals.

    bool operator==(const PanelName&) const = default;
};

/// Nothing when there are fewer than three components or the address is shorter than eight characters; further
/// components are ignored. The model is not looked at. Any bytes are allowed in `serviceName`.
std::optional<PanelName> parsePanelName(std::string_view serviceName);

/// Whether the model text holds one of the supported models' keywords, in exactly these letters.
bool namesSupportedModel(std::string_view model);

/// The same in letters of either case. Only ASCII letters are folded, since the keywords have no others.
bool namesSupportedModelInAnyCase(std::string_view model);

/// hexArrayFromString:
/// Characters 1 and 2, 3 and 4, 5 and 6, 7 and 8; nothing when there are fewer than eight. A character is a UTF-16 unit,
/// so that an emoji is two, or a byte that belongs to none.
std::optional<std::array<std::string, 4>> hexArrayFromString(std::string_view address);

/// formattedStringFromAddressComponents:
/// The hexadecimal pieces as signed 32-bit decimals with dots in between, for example "192.168.1.5".
std::string formattedStringFromAddressComponents(const std::array<std::string, 4>& components);

/// hexValue
/// By C's sscanf with "%x": leading white space, a sign and "0x" are accepted, the first other character ends the
/// number, and without a digit it is 0.
std::uint32_t hexValue(std::string_view text);

} // namespace companion
