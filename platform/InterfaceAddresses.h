#pragma once

#include <optional>
#include <string>
#include <vector>

namespace companion {

enum class AddressFamily { ipv4, ipv6, other };

struct NumericAddress {
    AddressFamily family = AddressFamily::other;
    std::string text; ///< Numeric host, for example "192.168.1.5".
};

/// One entry of the system's list; an interface with three addresses has three entries.
struct InterfaceAddress {
    std::string interfaceName;
    std::optional<NumericAddress> address;
};

/// The computer's network interfaces and their addresses. Any thread.
class InterfaceAddresses {
public:
    virtual ~InterfaceAddresses() = default;

    /// The entries in the system's order, or nothing when the system call fails.
    virtual std::optional<std::vector<InterfaceAddress>> list() const = 0;
};

/// The rule that picks the one interface whose address panels are told. Any thread.
class InterfaceNameRule {
public:
    virtual ~InterfaceNameRule() = default;

    /// The name to match, decided anew at every call: the chosen one, or else the interface that leads to
    /// `panelAddress` (dotted IPv4), or else that of the default route. "" when there is none.
    virtual std::string interfaceNameTowards(const std::optional<std::string>& panelAddress) const = 0;
};

} // namespace companion
