#pragma once

#include "cli/Json.h"
#include "cli/Output.h"
#include "cli/PanelFinder.h"
#include "cli/Probes.h"
#include "platform/InterfaceAddresses.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

/// One thing that `doctor` looked at.
struct Check {
    std::string name; ///< A few words: "network interface".
    Mark mark = Mark::ok;
    std::string found;
    std::string advice; ///< What to do; "" when there is nothing to be done.
};

/// "ok", "warn" or "fail".
std::string markText(Mark mark);

/// "network interface: eth0 has no IPv4 address - connect it to the network": all but the mark.
std::string checkLine(const Check& check);

Json checkJson(const Check& check);

/// "8 checks: 6 ok, 1 warning, 1 failed".
std::string summaryText(const std::vector<Check>& checks);

/// Whether touches can be listened for: `error` is the system's words when they cannot.
Check touchPortCheck(const std::optional<std::string>& error, const std::vector<PortHolder>& holders);

/// What waiting for touches came to; `after` is when the first one came, from `sender`.
Check touchesCheck(const std::optional<std::chrono::milliseconds>& after, const std::string& sender,
    std::chrono::milliseconds waited);

/// In place of it when the port is not ours; `error` is the socket's.
Check noTouchesCheck(const std::string& error);

Check displayCheck(const DisplayFacts& facts);

Check versionCheck(const std::string& version, const std::string& system);

/// Which interface's address panels are told, and by which rule; `chosenName` is that of `--interface`.
Check interfaceCheck(const InterfaceAddresses& addresses, const InterfaceNameRule& rule,
    const std::optional<std::string>& chosenName, const std::optional<std::string>& panelAddress);

Check mdnsDaemonCheck(const MdnsDaemonFacts& facts);

/// What a search brought; `whyNot` says why there was none, "" when there was.
Check panelsCheck(const std::vector<PanelName>& panels, std::size_t otherServices, const PanelChoice& choice,
    const std::string& whyNot);

/// One for each port of the panel; `port` stands for what is served there.
Check portCheck(const PortAnswer& answer);

/// In place of these when there is no panel to ask.
Check noPortCheck();

} // namespace companion::cli
