#include "cli/MdnsDaemon.h"

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

} // namespace companion::cli
