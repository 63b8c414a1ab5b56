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

/// One check of `doctor`.
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

/// Whether the port for touches can be bound; `error` is the system's message if not.
Check touchPortCheck(const std::optional<std::string>& error, const std::vector<PortHolder>& holders);

/// Whether this computer's firewalls know the port for touches by the name of the program, as packages arrange.
enum class FirewallProfiles { none, installed };

/// Whether touches arrived: the first one `after` the start of the wait, from `sender`.
Check touchesCheck(const std::optional<std::chrono::milliseconds>& after, const std::string& sender,
    std::chrono::milliseconds waited, FirewallProfiles profiles);

/// Replaces `touchesCheck` when the port could not be bound; `error` is the socket's.
Check noTouchesCheck(const std::string& error);

Check displayCheck(const DisplayFacts& facts);

Check versionCheck(const std::string& version, const std::string& system);

/// Which interface's address panels are told, and by which rule; `chosenName` is that of `--interface`.
Check interfaceCheck(const InterfaceAddresses& addresses, const InterfaceNameRule& rule,
    const std::optional<std::string>& chosenName, const std::optional<std::string>& panelAddress);

Check mdnsDaemonCheck(const MdnsDaemonFacts& facts);

/// The panels found; `whyNot` says why there was no search, "" if there was one.
Check panelsCheck(const std::vector<PanelName>& panels, std::size_t otherServices, const PanelChoice& choice,
    const std::string& whyNot);

/// One for each port of the panel; `port` stands for what is served there.
Check portCheck(const PortAnswer& answer);

/// Replaces `portCheck` when no panel is known.
Check noPortCheck();

} // namespace companion::cli
