#include "app/Options.h"

#include "platform/CommandLine.h"

#include <algorithm>

namespace companion {

namespace {

using Problem = std::optional<std::string>;

bool isPanelText(const std::string& text)
{
    if (std::count(text.begin(), text.end(), '|') != 2)
        return false;
    const std::string address = text.substr(text.rfind('|') + 1);
    return address.size() == 8 && address.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

Problem acceptPanel(Options& options, const std::string& value)
{
    if (!isPanelText(value))
        return "--panel takes 'model|name|hexaddress' with eight hexadecimal digits, not '" + value + "'";
    options.panels.push_back(value);
    return std::nullopt;
}

Problem acceptTouchSource(Options& options, const std::string& value)
{
    if (value != "any" && value != "panel")
        return "--touch-from takes 'any' or 'panel', not '" + value + "'";
    options.touchFrom = value == "panel" ? TouchSource::panel : TouchSource::any;
    return std::nullopt;
}

std::vector<CommandLineOption> optionTable(Options& options)
{
    return {
        textOption("--interface", "NAME",
            "tell panels the address of this network interface\n"
            "(default: the one that leads to the paired panel)",
            options.interfaceName),
        textOption(
            "--screen", "NAME", "touches reach this screen (default: the primary one)", options.screenName),
        {"--panel", "'MODEL|NAME|HEXADDRESS'",
            "list a panel as if it had been announced, for networks that\n"
            "block multicast; the address is eight hexadecimal digits,\n"
            "0A00020F for 10.0.2.15; may be given several times",
            [&](const std::string& value) { return acceptPanel(options, value); }},
        {"--touch-from", "any|panel",
            "take touches from anywhere (default), or only from the\n"
            "address of the paired panel",
            [&](const std::string& value) { return acceptTouchSource(options, value); }},
        flagOption("--no-restart", "do not start again by itself after a fatal error", options.hasNoRestart),
        flagOption("--remember-screen-access",
            "on Wayland, let the desktop remember the permission for\n"
            "touches, so that the next start does not ask again",
            options.remembersScreenAccess),
        flagOption("--new-instance",
            "start another one although the program runs already,\n"
            "which is brought to the front otherwise",
            options.isNewInstance),
    };
}

} // namespace

ParsedOptions parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    const ParsedCommandLine parsed = parseCommandLine(optionTable(options), arguments);
    if (parsed.wantsHelp)
        return HelpWanted{};
    if (parsed.wantsVersion)
        return VersionWanted{};
    if (parsed.problem)
        return BadUsage{*parsed.problem};
    options.files = parsed.operands;
    options.hasOptions = !parsed.givenOptions.empty();
    return options;
}

std::string helpText()
{
    Options unused;
    return "Usage: panel-companion [OPTION]... [FILE]...\n"
           "Pair with an interactive panel on the network and control this computer by touch.\n"
           "FILEs are sent to the panel, one after the other, once one is paired. If the program\n"
           "runs already, it comes to the front and takes the FILEs, and keeps its own options.\n\n"
        + helpEntries(optionTable(unused), /*column=*/24);
}

} // namespace companion
