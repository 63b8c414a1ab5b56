#include "cli/ComputerChecks.h"

#include "cli/SecondsText.h"

namespace companion::cli {

namespace {

constexpr auto portName = "UDP port 41863";

constexpr auto firewallAdvice =
    "a firewall is the usual reason: \"sudo ufw allow 41863/udp\", or \"sudo firewall-cmd --permanent "
    "--add-port=41863/udp && sudo firewall-cmd --reload\"; else, was the panel touched, and is touchback on?";

bool isCompanion(const std::vector<PortHolder>& holders)
{
    // The kernel keeps 15 bytes of a program's name, which are just enough.
    return holders.size() == 1 && holders.front().program == "panel-companion";
}

} // namespace

Check touchPortCheck(const std::optional<std::string>& error, const std::vector<PortHolder>& holders)
{
    if (!error)
        return {portName, Mark::ok, "free", ""};
    if (!saysPortIsTaken(*error))
        return {portName, Mark::fail, *error, ""};
    const std::string found = "held by " + holdersText(holders);
    if (isCompanion(holders))
        return {portName, Mark::ok, found + ", which listens for touches", ""};
    return {portName, Mark::fail, found, "end that program: touches cannot reach two"};
}

Check touchesCheck(const std::optional<std::chrono::milliseconds>& after, const std::string& sender,
    std::chrono::milliseconds waited)
{
    if (after)
        return {
            "touches", Mark::ok, "arrive from " + sender + ", the first after " + secondsText(*after), ""};
    return {"touches", Mark::fail, "none within " + secondsText(waited), firewallAdvice};
}

Check noTouchesCheck(const std::string& error)
{
    const std::string why = saysPortIsTaken(error) ? ", since another program has the port" : ": " + error;
    return {"touches", Mark::warn, "not waited for" + why, ""};
}

Check displayCheck(const DisplayFacts& facts)
{
    const bool isWayland = !facts.waylandDisplay.empty();
    const std::string xDisplay = "X display " + facts.display;
    const std::string which =
        isWayland ? "Wayland display " + facts.waylandDisplay + ", " + xDisplay : xDisplay;
    switch (facts.x) {
    case DisplayFacts::X::none:
        if (isWayland)
            return {"display", Mark::warn, "Wayland display " + facts.waylandDisplay + " without X",
                "touches need an X display: log in to an X11 session"};
        return {"display", Mark::warn, "none", "panel-companion needs one; panelctl does not"};
    case DisplayFacts::X::noLibrary:
        return {"display", Mark::warn, which + ", not checked, since libxcb or libxcb-xtest is missing",
            "install libxcb1 and libxcb-xtest0"};
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
    if (isWayland)
        return {"display", Mark::warn, which + " with XTEST",
            "touches reach programs that use X only; an X11 session has no such limit"};
    return {"display", Mark::ok, which + " takes input events (XTEST)", ""};
}

Check versionCheck(const std::string& version, const std::string& system)
{
    return {"version", Mark::ok, version + " on " + system, ""};
}

} // namespace companion::cli
