#pragma once

#include <optional>
#include <string>

namespace companion::simulator {

/// Dotted IPv4 text as the eight upper-case hexadecimal digits of an announcement: 10.0.2.15 is 0A00020F.
/// Nothing if the text is not an IPv4 address.
std::optional<std::string> hexAddress(const std::string& ipv4);

/// The instance name of a panel's announcement, model|name|hexaddress, which DNS-SD limits to 63 bytes (RFC 6763,
/// section 4.1.1).
struct InstanceName {
    static constexpr std::size_t maxBytes = 63;

    std::string model;
    std::string name;
    std::string hex;

    /// Why it cannot be announced, in a few words; nothing if it can.
    std::optional<std::string> problem() const;

    /// With `attempt` 1, the name as given. Higher numbers are for a name that is taken: they number the name part,
    /// "Room (2)", which is shortened if necessary.
    std::string text(unsigned attempt = 1) const;

private:
    std::string joined(const std::string& namePart) const;
};

} // namespace companion::simulator
