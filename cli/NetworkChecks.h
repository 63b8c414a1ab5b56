#pragma once

#include "cli/Check.h"
#include "cli/MdnsDaemon.h"
#include "cli/PanelFinder.h"
#include "platform/InterfaceAddresses.h"

#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

/// Which interface's address panels are told, and by which rule; `chosenName` is that of `--interface`.
Check interfaceCheck(const InterfaceAddresses& addresses, const InterfaceNameRule& rule,
    const std::optional<std::string>& chosenName, const std::optional<std::string>& panelAddress);

Check mdnsDaemonCheck(const MdnsDaemonFacts& facts);

/// What a search brought; `whyNot` says why there was none, "" when there was.
Check panelsCheck(const std::vector<PanelName>& panels, std::size_t otherServices, const PanelChoice& choice,
    const std::string& whyNot);

/// What a connection to a port of a panel came to.
struct PortAnswer {
    std::string address;
    std::uint16_t port = 0;
    std::string error; ///< The system's words; "" when it was answered.
};

/// One for each port of the panel; `port` stands for what is served there.
Check portCheck(const PortAnswer& answer);

/// In place of these when there is no panel to ask.
Check noPortCheck();

} // namespace companion::cli
