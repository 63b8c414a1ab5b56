#pragma once

#include "platform/InterfaceAddresses.h"

namespace companion {

/// The interface of the given name, or else the one that the kernel routes by: towards the panel, or by default.
/// The kernel is asked over rtnetlink(7), which answers at once. Any thread.
class RoutedInterfaceName : public InterfaceNameRule {
public:
    explicit RoutedInterfaceName(std::optional<std::string> chosenName = std::nullopt);

    std::string interfaceNameTowards(const std::optional<std::string>& panelAddress) const override;

private:
    std::optional<std::string> m_chosenName;
};

} // namespace companion
