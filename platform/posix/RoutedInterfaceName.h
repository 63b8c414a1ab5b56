#pragma once

#include "platform/InterfaceAddresses.h"

#include <string>

namespace companion {

/// For documentation only (RFC 5737), so it is routed as any other address of the internet is.
constexpr auto internetAddress = "192.0.2.1";

/// The source address of packets to `destination`, both as dotted text; "" without a route. Nothing is sent. Any thread.
std::string sourceAddressTowards(const std::string& destination);

/// The interface of the given name, or else the one whose address packets to the panel carry as their source; without a
/// panel or a route to it, packets to the internet. Nothing is sent. Any thread.
class RoutedInterfaceName : public InterfaceNameRule {
public:
    explicit RoutedInterfaceName(std::optional<std::string> chosenName = std::nullopt);

    std::string interfaceNameTowards(const std::optional<std::string>& panelAddress) const override;

private:
    std::optional<std::string> m_chosenName;
};

} // namespace companion
