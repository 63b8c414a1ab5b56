#include "cli/UdpPortHolder.h"

#include <system_error>

namespace companion::cli {

bool saysPortIsTaken(const std::string& error)
{
    return error == std::make_error_code(std::errc::address_in_use).message();
}

std::string holdersText(const std::vector<PortHolder>& holders)
{
    if (holders.empty())
        return "a program that this user may not see";
    std::string text;
    for (const PortHolder& holder : holders) {
        text += text.empty() ? "" : " and ";
        text += holder.program + " (process " + std::to_string(holder.processId) + ")";
    }
    return text;
}

} // namespace companion::cli
