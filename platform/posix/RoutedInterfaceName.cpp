#include "platform/posix/RoutedInterfaceName.h"

#include "platform/posix/RouteQuery.h"

#include <arpa/inet.h>
#include <utility>

namespace companion {

RoutedInterfaceName::RoutedInterfaceName(std::optional<std::string> chosenName)
    : m_chosenName(std::move(chosenName))
{
}

std::string RoutedInterfaceName::interfaceNameTowards(const std::optional<std::string>& panelAddress) const
{
    if (m_chosenName)
        return *m_chosenName;
    in_addr panel{};
    if (panelAddress && inet_pton(AF_INET, panelAddress->c_str(), &panel) == 1) {
        const std::string name = interfaceOfRouteTo(panel);
        if (!name.empty())
            return name;
    }
    return interfaceOfDefaultRoute();
}

} // namespace companion
