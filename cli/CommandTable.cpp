#include "cli/CommandTable.h"

#include <algorithm>

namespace companion::cli {

namespace {

constexpr std::size_t helpColumn = 26;

/// "  --name VALUE            help", further lines of the help below its beginning.
std::string helpEntry(const std::string& what, const std::string& help)
{
    std::string text = "  " + what;
    text += text.size() + 2 > helpColumn ? "\n" + std::string(helpColumn, ' ')
                                         : std::string(helpColumn - text.size(), ' ');
    for (const char c : help) {
        text += c;
        if (c == '\n')
            text += std::string(helpColumn, ' ');
    }
    return text + "\n";
}

std::string withValue(const std::string& name, const std::string& value)
{
    return value.empty() ? name : name + " " + value;
}

std::string optionEntries(const std::vector<OptionEntry>& options)
{
    std::string text;
    for (const OptionEntry& option : options)
        text += helpEntry(withValue(option.name, option.value), option.help);
    return text;
}

constexpr auto statusHelp = R"(
Exit status: 0 done, 1 the panel said no or a check failed, 2 bad usage or a file
that cannot be read or written, 3 no panel, 4 network.
)";

} // namespace

const std::vector<CommandEntry>& commandTable()
{
    static const std::vector<CommandEntry> table{
        {CommandName::discover, "discover", "", "list the panels that announce themselves", false,
            {{"--seconds", "N", "look for so long (default: 5)"}}},
        {CommandName::ping, "ping", "", "send one heartbeat and tell the answer", true, {}},
        {CommandName::touchback, "touchback", "on|off", "have touches sent to this computer, or no more",
            true, {{"--hdmi", "", "the picture comes over a cable"}}},
        {CommandName::trigger, "trigger", "", "ask the panel to open its casting receiver", true, {}},
        {CommandName::upload, "upload", "FILE", "send a file to the panel", true, {}},
        {CommandName::touches, "touches", "", "print the touches that arrive, until interrupted", false,
            {{"--record", "FILE", "write them to a file, too, to be played again"}}},
        {CommandName::doctor, "doctor", "", "check what keeps a panel and this computer apart", false,
            {{"--touches", "", "also wait for a touch on the panel"}}},
    };
    return table;
}

const CommandEntry& entryOf(CommandName command)
{
    const auto& table = commandTable();
    return *std::find_if(
        table.begin(), table.end(), [&](const CommandEntry& entry) { return entry.command == command; });
}

const std::vector<OptionEntry>& commonOptions()
{
    static const std::vector<OptionEntry> options{
        {"--panel-address", "IPV4", "the panel's address"},
        {"--panel", "NAME", "the panel's name, as announced on the network"},
        {"--interface", "NAME",
            "tell the panel the address of this network interface\n"
            "(default: the one that leads to the panel)"},
        {"--timeout", "S", "seconds to wait for an answer, a panel or a touch"},
        {"--json", "", "machine-readable output"},
        {"--verbose", "", "tell on standard error what goes on"},
        {"--version", "", "print the version and exit"},
        {"--help", "", "print this text and exit"},
    };
    return options;
}

std::string helpText()
{
    std::string text = "Usage: panelctl COMMAND [OPTION]...\n"
                       "Work with interactive panels from a terminal or a script.\n\nCommands:\n";
    for (const CommandEntry& entry : commandTable()) {
        text += helpEntry(withValue(entry.name, entry.operand), entry.help);
        for (const OptionEntry& option : entry.options)
            text += helpEntry("  " + withValue(option.name, option.value), option.help);
    }
    return text + "\nOptions of every command:\n" + optionEntries(commonOptions()) + statusHelp;
}

std::string helpText(CommandName command)
{
    const CommandEntry& entry = entryOf(command);
    return "Usage: panelctl " + withValue(entry.name, entry.operand) + " [OPTION]...\n" + "panelctl "
        + entry.name + ": " + entry.help + "\n\n" + optionEntries(entry.options)
        + optionEntries(commonOptions()) + statusHelp;
}

} // namespace companion::cli
