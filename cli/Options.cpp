#include "cli/Options.h"

#include "platform/CommandLine.h"
#include "touchback/Number.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cmath>

namespace companion::cli {

namespace {

using Problem = std::optional<std::string>;

constexpr std::size_t helpColumn = 26;
constexpr double longestSeconds = 86'400;

struct CommandEntry {
    CommandName command;
    std::string name;
    std::string operand; ///< As in the help; "" when there is none.
    std::string help;
    bool needsPanel = false; ///< One must be given by address or by name.
    std::vector<CommandLineOption> options = {};

    std::string usage() const { return operand.empty() ? name : name + " " + operand; }
};

template <typename Time>
CommandLineOption timeOption(
    const std::string& name, const std::string& valueName, const std::string& help, Time& target)
{
    return {name, valueName, help, [name, &target](const std::string& value) -> Problem {
                const std::optional<double> seconds = parseNumber(value);
                if (!seconds || *seconds < 0.001 || *seconds > longestSeconds)
                    return name + " needs a number of seconds from 0.001 to 86400, not '" + value + "'";
                target = std::chrono::milliseconds(std::llround(*seconds * 1000));
                return std::nullopt;
            }};
}

CommandLineOption addressOption(std::optional<std::string>& target)
{
    return {"--panel-address", "IPV4", "the panel's address", [&target](const std::string& value) -> Problem {
                if (!isIPv4Text(value))
                    return "--panel-address needs an IPv4 address such as 192.168.1.20, not '" + value + "'";
                target = value;
                return std::nullopt;
            }};
}

CommandLineOption sizeOption(std::uint64_t& target)
{
    return {"--max-size", "MIB", "stop recording at this size (default: 100)",
        [&target](const std::string& value) -> Problem {
            constexpr double most = 1'000'000;
            constexpr double bytesOfMiB = 1 << 20;
            const std::optional<double> size = parseNumber(value);
            if (!size || *size < 0.001 || *size > most)
                return "--max-size needs a number of MiB from 0.001 to 1000000, not '" + value + "'";
            target = static_cast<std::uint64_t>(std::llround(*size * bytesOfMiB));
            return std::nullopt;
        }};
}

std::vector<CommandEntry> commandTable(Options& options)
{
    return {
        {CommandName::discover, "discover", "", "list the panels that announce themselves", false,
            {timeOption("--seconds", "N", "search for N seconds (default: 5)", options.searchTime)}},
        {CommandName::ping, "ping", "", "send one heartbeat and print the answer", true},
        {CommandName::touchback, "touchback", "on|off", "start or stop sending touches to this computer",
            true, {flagOption("--hdmi", "the picture comes over a cable", options.isHDMI)}},
        {CommandName::trigger, "trigger", "", "ask the panel to open its casting receiver", true},
        {CommandName::upload, "upload", "FILE", "send a file to the panel", true},
        {CommandName::touches, "touches", "", "print the touches that arrive, until interrupted", false,
            {textOption("--record", "FILE", "also record them to a file, to be replayed", options.recording),
                sizeOption(options.mostRecordedBytes)}},
        {CommandName::doctor, "doctor", "", "diagnose connection problems between this\ncomputer and a panel",
            false, {flagOption("--touches", "also wait for a touch on the panel", options.awaitsTouches)}},
    };
}

std::vector<CommandLineOption> commonOptions(Options& options)
{
    return {
        addressOption(options.panelAddress),
        textOption("--panel", "NAME", "the panel's name, as announced on the network", options.panelName),
        textOption("--interface", "NAME",
            "tell the panel the address of this network interface\n"
            "(default: the one that leads to the panel)",
            options.interfaceName),
        timeOption("--timeout", "S", "seconds to wait for an answer, a panel or a touch", options.timeout),
        flagOption("--json", "machine-readable output", options.isJson),
        flagOption("--verbose", "log diagnostics to standard error", options.isVerbose),
    };
}

bool hasOption(const std::vector<CommandLineOption>& options, const std::string& name)
{
    return std::any_of(
        options.begin(), options.end(), [&](const CommandLineOption& option) { return option.name == name; });
}

CommandEntry entryOf(CommandName command)
{
    Options unused;
    const auto table = commandTable(unused);
    return *std::find_if(
        table.begin(), table.end(), [&](const CommandEntry& entry) { return entry.command == command; });
}

Problem acceptOperands(const CommandEntry& entry, const std::vector<std::string>& operands, Options& options)
{
    const std::size_t expected = entry.operand.empty() ? 1 : 2;
    if (operands.size() > expected)
        return "unexpected argument '" + operands[expected] + "'";
    if (operands.size() < expected)
        return entry.name + " needs " + entry.operand;
    if (entry.command == CommandName::upload)
        options.file = operands[1];
    if (entry.command != CommandName::touchback)
        return std::nullopt;
    options.switchesOn = operands[1] == "on";
    if (operands[1] != "on" && operands[1] != "off")
        return "touchback needs on or off, not '" + operands[1] + "'";
    return std::nullopt;
}

/// Options of other commands are known, so that their values are not taken for operands, and refused here.
Problem acceptCommand(const CommandEntry& entry, const ParsedCommandLine& parsed, Options& options)
{
    options.command = entry.command;
    Options unused;
    for (const std::string& name : parsed.givenOptions) {
        if (!hasOption(commonOptions(unused), name) && !hasOption(entry.options, name))
            return entry.name + " takes no " + name;
    }
    if (options.panelAddress && options.panelName)
        return "--panel-address and --panel exclude each other";
    if (entry.needsPanel && !options.panelAddress && !options.panelName)
        return entry.name + " needs --panel-address or --panel";
    return acceptOperands(entry, parsed.operands, options);
}

constexpr auto statusHelp = R"(
Exit status: 0 done, 1 the panel refused or a check failed, 2 bad usage or a file
that cannot be read or written, 3 no panel, 4 network.
)";

std::string helpOf(const CommandEntry& entry)
{
    Options unused;
    std::string help = entry.help;
    std::replace(help.begin(), help.end(), '\n', ' ');
    std::vector<CommandLineOption> options = entry.options;
    for (CommandLineOption& option : commonOptions(unused))
        options.push_back(std::move(option));
    return "Usage: panelctl " + entry.usage() + " [OPTION]...\npanelctl " + entry.name + ": " + help + "\n\n"
        + helpEntries(options, helpColumn) + statusHelp;
}

} // namespace

std::string nameText(CommandName command)
{
    return entryOf(command).name;
}

ParsedOptions parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    const std::vector<CommandEntry> table = commandTable(options);
    std::vector<CommandLineOption> all = commonOptions(options);
    for (const CommandEntry& entry : table)
        all.insert(all.end(), entry.options.begin(), entry.options.end());

    const ParsedCommandLine parsed = parseCommandLine(all, arguments);
    if (parsed.problem)
        return BadUsage{*parsed.problem};
    if (parsed.wantsVersion)
        return VersionWanted{};
    const auto entry = std::find_if(table.begin(), table.end(), [&](const CommandEntry& each) {
        return !parsed.operands.empty() && each.name == parsed.operands.front();
    });
    if (parsed.wantsHelp)
        return HelpWanted{entry == table.end() ? std::nullopt : std::optional(entry->command)};
    if (parsed.operands.empty())
        return BadUsage{"no command"};
    if (entry == table.end())
        return BadUsage{"unknown command '" + parsed.operands.front() + "'"};
    if (const Problem problem = acceptCommand(*entry, parsed, options))
        return BadUsage{*problem};
    return options;
}

std::string helpText(std::optional<CommandName> command)
{
    if (command)
        return helpOf(entryOf(*command));
    Options unused;
    std::string text = "Usage: panelctl COMMAND [OPTION]...\n"
                       "Work with interactive panels from a terminal or a script.\n\nCommands:\n";
    for (const CommandEntry& entry : commandTable(unused)) {
        text += helpEntry(entry.usage(), entry.help, helpColumn);
        for (const CommandLineOption& option : entry.options)
            text += "  " + helpEntry(option, helpColumn - 2);
    }
    return text + "\nOptions of every command:\n" + helpEntries(commonOptions(unused), helpColumn)
        + statusHelp;
}

bool isIPv4Text(const std::string& text)
{
    std::array<unsigned char, 4> octets{};
    return inet_pton(AF_INET, text.c_str(), octets.data()) == 1;
}

} // namespace companion::cli
