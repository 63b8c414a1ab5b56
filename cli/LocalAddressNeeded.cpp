#include "cli/LocalAddressNeeded.h"

#include "panel/LocalAddress.h"

namespace companion::cli {

std::optional<Result> lackOfLocalAddress(const PanelRequestHost& host, const std::string& panelAddress)
{
    const std::string name = host.interfaceNameRule.interfaceNameTowards(panelAddress);
    if (!getLocalIPAddress(host.interfaceAddresses, name).empty())
        return std::nullopt;
    const std::string why = name.empty()
        ? "no network interface leads to " + panelAddress
        : "the network interface " + name + " has no IPv4 address that a panel could be told";
    return Result{ExitStatus::network, why, JsonObject().add("address", panelAddress)};
}

} // namespace companion::cli
