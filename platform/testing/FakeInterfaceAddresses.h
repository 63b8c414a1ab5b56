#pragma once

#include "platform/InterfaceAddresses.h"

namespace companion::testing {

/// The list that the test sets; at first one loopback entry and "en0" with 192.168.1.5.
class FakeInterfaceAddresses : public InterfaceAddresses {
public:
    std::optional<std::vector<InterfaceAddress>> list() const override { return entries; }

    std::optional<std::vector<InterfaceAddress>> entries =
        std::vector<InterfaceAddress>{{"lo0", NumericAddress{AddressFamily::ipv4, "127.0.0.1"}},
            {"en0", NumericAddress{AddressFamily::ipv6, "fe80::1"}},
            {"en0", NumericAddress{AddressFamily::ipv4, "192.168.1.5"}}};
};

class FakeInterfaceNameRule : public InterfaceNameRule {
public:
    std::string interfaceNameTowards(const std::optional<std::string>&) const override { return name; }

    std::string name = "en0";
};

} // namespace companion::testing
