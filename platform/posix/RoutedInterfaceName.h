#pragma once

#include "platform/InterfaceAddresses.h"

namespace companion {

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
