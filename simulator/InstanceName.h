#pragma once

#include <optional>
#include <string>

namespace companion::simulator {

/// Dotted IPv4 text as the eight upper-case hexadecimal digits of an announcement: 10.0.2.15 is 0A00020F.
/// Nothing when the text is no IPv4 address.
std::optional<std::string> hexAddress(const std::string& ipv4);

/// The instance name of a panel's announcement, model|name|hexaddress, which DNS-SD limits to 63 bytes (RFC 6763,
/// section 4.1.1).
class InstanceName {
public:
    static constexpr std::size_t maxBytes = 63;

    InstanceName(std::string model, std::string name, std::string hex);

    /// Why it cannot be announced, in a few words; nothing when it can.
    std::optional<std::string> problem() const;

    /// `attempt` 1 is the name as given; 2 and more, for a name that is taken, number the name part, "Room (2)",
    /// which is shortened where the whole would get too long.
    std::string text(unsigned attempt = 1) const;

private:
    std::string joined(const std::string& name) const;

    std::string m_model;
    std::string m_name;
    std::string m_hex;
};

} // namespace companion::simulator
