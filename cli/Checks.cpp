#include "cli/Checks.h"

#include "cli/Text.h"
#include "panel/LocalAddress.h"

#include <algorithm>
#include <system_error>

namespace companion::cli {

namespace {

std::size_t countOf(const std::vector<Check>& checks, Mark mark)
{
    return static_cast<std::size_t>(
        std::count_if(checks.begin(), checks.end(), [&](const Check& check) { return check.mark == mark; }));
}

constexpr auto portName = "UDP port 41863";
constexpr auto installPortalAdvice =
    "install xdg-desktop-portal and its backend for this desktop, or log in to an X11 session";

std::string firewallAdvice(FirewallProfiles profiles)
{
    const bool areInstalled = profiles == FirewallProfiles::installed;
    const std::string ufw = areInstalled ? "panel-companion" : "41863/udp";
    const std::string firewalld = areInstalled ? "--add-service=panel-companion" : "--add-port=41863/udp";
    return "a firewall is the usual reason: \"sudo ufw allow " + ufw
        + "\", or \"sudo firewall-cmd --permanent " + firewalld
        + " && sudo firewall-cmd --reload\"; otherwise check that the panel was touched and that touchback is on";
}

bool isCompanion(const std::vector<PortHolder>& holders)
{
    // The kernel keeps 15 bytes of a program's name, which are just enough.
    return holders.size() == 1 && holders.front().program == "panel-companion";
}

bool hasInterface(const std::vector<InterfaceAddress>& entries, const std::string& name)
{
    return std::any_of(entries.begin(), entries.end(),
        [&](const InterfaceAddress& entry) { return entry.interfaceName == name; });
}

/// "eth0, wlan0": those that could be told to panels.
std::string usableInterfaces(const std::vector<InterfaceAddress>& entries)
{
    std::vector<std::string> names;
    for (const InterfaceAddress& entry : entries) {
        const bool isUsable = entry.address && entry.address->family == AddressFamily::ipv4;
        if (isUsable && std::find(names.begin(), names.end(), entry.interfaceName) == names.end())
            names.push_back(entry.interfaceName);
    }
    std::string text;
    for (const std::string& name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text.empty() ? "none" : text;
}

std::string ruleText(
    const std::optional<std::string>& chosenName, const std::optional<std::string>& panelAddress)
{
    if (chosenName)
        return "chosen by --interface";
    if (panelAddress)
        return "leads to " + *panelAddress;
    return "has the default route";
}

std::string listText(const std::vector<PanelName>& panels)
{
    std::string text;
    for (const PanelName& panel : panels)
        text += (text.empty() ? "" : ", ") + panel.name + " (" + panel.ip + ")";
    return text;
}

} // namespace

std::string markText(Mark mark)
{
    switch (mark) {
    case Mark::ok:
        return "ok";
    case Mark::warn:
        return "warn";
    case Mark::fail:
        return "fail";
    }
    return "";
}

std::string checkLine(const Check& check)
{
    return check.name + ": " + check.found + (check.advice.empty() ? "" : " - " + check.advice);
}

Json checkJson(const Check& check)
{
    return {{"check", check.name}, {"mark", markText(check.mark)}, {"found", check.found},
        {"advice", check.advice.empty() ? Json() : Json(check.advice)}};
}

std::string summaryText(const std::vector<Check>& checks)
{
    const std::size_t warnings = countOf(checks, Mark::warn);
    return std::to_string(checks.size()) + " checks: " + std::to_string(countOf(checks, Mark::ok)) + " ok, "
        + std::to_string(warnings) + (warnings == 1 ? " warning, " : " warnings, ")
        + std::to_string(countOf(checks, Mark::fail)) + " failed";
}

Check touchPortCheck(const std::optional<std::string>& error, const std::vector<PortHolder>& holders)
{
    if (!error)
        return {portName, Mark::ok, "free", ""};
    if (!saysPortIsTaken(*error))
        return {portName, Mark::fail, *error, ""};
    const std::string found = "held by " + holdersText(holders);
    if (isCompanion(holders))
        return {portName, Mark::ok, found + ", which listens for touches", ""};
    return {portName, Mark::fail, found, "stop that program: only one can receive touches"};
}

Check touchesCheck(const std::optional<std::chrono::milliseconds>& after, const std::string& sender,
    std::chrono::milliseconds waited, FirewallProfiles profiles)
{
    if (after)
        return {
            "touches", Mark::ok, "arrive from " + sender + ", the first after " + secondsText(*after), ""};
    return {"touches", Mark::fail, "none within " + secondsText(waited), firewallAdvice(profiles)};
}

Check noTouchesCheck(const std::string& error)
{
    const std::string why = saysPortIsTaken(error) ? ", since another program has the port" : ": " + error;
    return {"touches", Mark::warn, "not checked" + why, ""};
}

Check displayCheck(const DisplayFacts& facts)
{
    const bool isWayland = !facts.waylandDisplay.empty();
    const std::string xDisplay = "X display " + facts.display;
    const std::string waylandDisplay = "Wayland display " + facts.waylandDisplay;
    if (facts.wayland)
        return {"display", Mark::ok,
            waylandDisplay + "; " + inputChoiceText(/*isWaylandSession=*/true, *facts.wayland, {}), ""};
    switch (facts.x) {
    case DisplayFacts::X::none:
        if (isWayland)
            return {"display", Mark::warn, waylandDisplay + " without X", installPortalAdvice};
        return {"display", Mark::warn, "none", "panel-companion needs one; panelctl does not"};
    case DisplayFacts::X::cannotOpen:
        return {"display", Mark::fail, xDisplay + " cannot be opened",
            "run it as the user who is logged in there (DISPLAY, XAUTHORITY)"};
    case DisplayFacts::X::silent:
        return {"display", Mark::fail, xDisplay + " does not answer", "restart the session"};
    case DisplayFacts::X::noXTest:
        return {"display", Mark::fail, xDisplay + " has no XTEST extension, so input events cannot be posted",
            "enable the extension in the X server"};
    case DisplayFacts::X::usable:
        break;
    }
    const std::string choice = "; " + inputChoiceText(isWayland, InputWay::xtest, {});
    if (isWayland)
        return {"display", Mark::warn, waylandDisplay + ", " + xDisplay + choice, installPortalAdvice};
    return {"display", Mark::ok, xDisplay + choice, ""};
}

Check versionCheck(const std::string& version, const std::string& system)
{
    return {"version", Mark::ok, version + " on " + system, ""};
}

Check interfaceCheck(const InterfaceAddresses& addresses, const InterfaceNameRule& rule,
    const std::optional<std::string>& chosenName, const std::optional<std::string>& panelAddress)
{
    Check check{"network interface", Mark::fail, "", ""};
    const auto entries = addresses.list().value_or(std::vector<InterfaceAddress>());
    const std::string name = rule.interfaceNameTowards(panelAddress);
    const std::string others = "interfaces with an IPv4 address: " + usableInterfaces(entries);
    if (name.empty()) {
        check.found = panelAddress ? "none leads to " + *panelAddress : "none has a default route";
        check.advice = "connect to the panel's network, or choose one with --interface (" + others + ")";
        return check;
    }
    const std::string address = getLocalIPAddress(addresses, name);
    const std::string rules = name + " (" + ruleText(chosenName, panelAddress) + ")";
    if (address.empty()) {
        check.found = rules
            + (hasInterface(entries, name) ? " has no IPv4 address" : " does not exist or has no address");
        check.advice = "connect it, or choose another one with --interface (" + others + ")";
        return check;
    }
    check.found = rules + " with " + address;
    const bool isLoopback =
        address.starts_with("127.") && !(panelAddress && panelAddress->starts_with("127."));
    check.mark = isLoopback ? Mark::warn : Mark::ok;
    if (isLoopback)
        check.advice = "no panel on the network can send touches there: choose another one with --interface";
    return check;
}

Check mdnsDaemonCheck(const MdnsDaemonFacts& facts)
{
    if (facts.state == MdnsDaemonState::running)
        return {"mDNS daemon", Mark::ok, facts.detail + " runs", ""};
    std::string advice = "start the system bus: sudo systemctl start dbus";
    if (facts.state == MdnsDaemonState::noDaemon)
        advice = "install avahi-daemon and start it: sudo systemctl start avahi-daemon";
    else if (facts.state == MdnsDaemonState::silentDaemon)
        advice = "restart it: sudo systemctl restart avahi-daemon";
    return {"mDNS daemon", Mark::fail, whyNoPanelCanBeFound(facts), advice};
}

Check panelsCheck(const std::vector<PanelName>& panels, std::size_t otherServices, const PanelChoice& choice,
    const std::string& whyNot)
{
    Check check{"panels", Mark::warn, "", ""};
    if (!whyNot.empty()) {
        check.found = "not searched for";
        check.advice = "a panel can be given with --panel-address";
        return check;
    }
    check.found = panels.empty() ? "none found" : listText(panels);
    if (otherServices > 0)
        check.found += ", beside " + std::to_string(otherServices) + " other AirPlay service"
            + (otherServices == 1 ? "" : "s");
    const bool isChosenThere = std::any_of(
        panels.begin(), panels.end(), [&](const PanelName& panel) { return choice.includes(panel); });
    if (isChosenThere) {
        check.mark = Mark::ok;
        return check;
    }
    if (choice.name) {
        check.mark = Mark::fail;
        check.found += "; none is called \"" + *choice.name + "\"";
    }
    check.advice =
        "check that the panel is on and in this network, and that multicast (UDP port 5353) is not blocked";
    return check;
}

Check portCheck(const PortAnswer& answer)
{
    Check check{"panel's port " + std::to_string(answer.port), Mark::ok, answer.address + " answers", ""};
    if (answer.error.empty())
        return check;
    check.mark = Mark::fail;
    check.found = answer.address + ": " + answer.error;
    const auto refused = std::make_error_code(std::errc::connection_refused);
    check.advice = answer.error == refused.message()
        ? "no service listens there: restart the panel, or check its address"
        : "check that the panel is on and that this computer can reach its network";
    return check;
}

Check noPortCheck()
{
    return {"panel's ports", Mark::warn, "not checked, since no panel is known",
        "name one with --panel-address or --panel"};
}

} // namespace companion::cli
