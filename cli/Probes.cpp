#include "cli/Probes.h"

#include <system_error>

namespace companion::cli {

std::string whyNoPanelCanBeFound(const MdnsDaemonFacts& facts)
{
    switch (facts.state) {
    case MdnsDaemonState::running:
        return "";
    case MdnsDaemonState::noBus:
        return "no system bus to reach the mDNS daemon over (" + facts.detail + ")";
    case MdnsDaemonState::silentBus:
        return "the system bus does not answer";
    case MdnsDaemonState::noDaemon:
        return "no mDNS daemon runs (avahi-daemon)";
    case MdnsDaemonState::silentDaemon:
        return "the mDNS daemon does not answer (avahi-daemon)";
    }
    return "";
}

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
