#include "cli/Options.h"

#include "touchback/Number.h"

#include <algorithm>
#include <cmath>

namespace companion::cli {

namespace {

using Problem = std::optional<std::string>;

constexpr double longestSeconds = 86'400;

const OptionEntry* findOption(const std::vector<OptionEntry>& options, const std::string& name)
{
    const auto found = std::find_if(
        options.begin(), options.end(), [&](const OptionEntry& option) { return option.name == name; });
    return found == options.end() ? nullptr : &*found;
}

const OptionEntry* findOptionAnywhere(const std::string& name)
{
    if (const OptionEntry* option = findOption(commonOptions(), name))
        return option;
    for (const CommandEntry& entry : commandTable()) {
        if (const OptionEntry* option = findOption(entry.options, name))
            return option;
    }
    return nullptr;
}

std::optional<std::chrono::milliseconds> parseSeconds(const std::string& text)
{
    const std::optional<double> seconds = parseNumber(text);
    if (!seconds || *seconds < 0.001 || *seconds > longestSeconds)
        return std::nullopt;
    return std::chrono::milliseconds(std::llround(*seconds * 1000));
}

/// Takes the command line apart, then makes sense of it.
class CommandLine {
public:
    explicit CommandLine(const std::vector<std::string>& arguments)
        : m_arguments(arguments)
    {
    }

    ParsedOptions parse()
    {
        if (const Problem problem = readAll())
            return BadUsage{*problem};
        if (m_wantsVersion)
            return VersionWanted{};
        const CommandEntry* entry = m_operands.empty() ? nullptr : findCommand(m_operands.front());
        if (m_wantsHelp)
            return HelpWanted{entry ? std::optional(entry->command) : std::nullopt};
        if (m_operands.empty())
            return BadUsage{"no command"};
        if (!entry)
            return BadUsage{"unknown command '" + m_operands.front() + "'"};
        if (const Problem problem = fit(*entry))
            return BadUsage{*problem};
        return m_options;
    }

private:
    Problem readAll()
    {
        for (; m_next < m_arguments.size(); ++m_next) {
            const std::string& argument = m_arguments[m_next];
            if (argument == "--") {
                m_operands.insert(m_operands.end(),
                    m_arguments.begin() + static_cast<std::ptrdiff_t>(m_next) + 1, m_arguments.end());
                return std::nullopt;
            }
            if (argument == "-h")
                m_wantsHelp = true;
            else if (argument.size() < 2 || argument.front() != '-')
                m_operands.push_back(argument);
            else if (Problem problem = readOption(argument))
                return problem;
        }
        return std::nullopt;
    }

    Problem readOption(const std::string& argument)
    {
        const std::size_t equals = argument.find('=');
        const bool isJoined = equals != std::string::npos;
        const std::string name = argument.substr(0, equals);
        const OptionEntry* option = findOptionAnywhere(name);
        if (!option)
            return "unknown option '" + argument + "'";
        m_given.push_back(name);
        if (option->value.empty())
            return isJoined ? Problem(name + " takes no value") : setFlag(name);
        if (!isJoined && m_next + 1 == m_arguments.size())
            return name + " needs a value";
        const std::string value = isJoined ? argument.substr(equals + 1) : m_arguments[++m_next];
        return value.empty() ? Problem(name + " needs a value") : setValue(name, value);
    }

    Problem setFlag(const std::string& name)
    {
        m_wantsHelp |= name == "--help";
        m_wantsVersion |= name == "--version";
        m_options.isJson |= name == "--json";
        m_options.isVerbose |= name == "--verbose";
        m_options.isHDMI |= name == "--hdmi";
        m_options.awaitsTouches |= name == "--touches";
        return std::nullopt;
    }

    Problem setValue(const std::string& name, const std::string& value)
    {
        if (name == "--seconds" || name == "--timeout") {
            const auto time = parseSeconds(value);
            if (!time)
                return name + " needs a number of seconds from 0.001 to 86400, not '" + value + "'";
            if (name == "--timeout")
                m_options.timeout = time;
            else
                m_options.searchTime = *time;
        } else if (name == "--panel-address") {
            if (!isIPv4Text(value))
                return "--panel-address needs an IPv4 address such as 192.168.1.20, not '" + value + "'";
            m_options.panelAddress = value;
        } else {
            auto& text = name == "--panel" ? m_options.panelName
                : name == "--record"       ? m_options.recording
                                           : m_options.interfaceName;
            text = value;
        }
        return std::nullopt;
    }

    static const CommandEntry* findCommand(const std::string& name)
    {
        for (const CommandEntry& entry : commandTable()) {
            if (entry.name == name)
                return &entry;
        }
        return nullptr;
    }

    /// What is given must be what the command takes.
    Problem fit(const CommandEntry& entry)
    {
        m_options.command = entry.command;
        for (const std::string& name : m_given) {
            if (!findOption(commonOptions(), name) && !findOption(entry.options, name))
                return entry.name + " takes no " + name;
        }
        if (m_options.panelAddress && m_options.panelName)
            return "--panel-address and --panel exclude each other";
        if (entry.needsPanel && !m_options.panelAddress && !m_options.panelName)
            return entry.name + " needs --panel-address or --panel";
        return fitOperands(entry);
    }

    Problem fitOperands(const CommandEntry& entry)
    {
        const std::size_t expected = entry.operand.empty() ? 1 : 2;
        if (m_operands.size() > expected)
            return "unexpected argument '" + m_operands[expected] + "'";
        if (m_operands.size() < expected)
            return entry.name + " needs " + entry.operand;
        if (entry.command == CommandName::upload)
            m_options.file = m_operands[1];
        if (entry.command != CommandName::touchback)
            return std::nullopt;
        m_options.switchesOn = m_operands[1] == "on";
        if (m_operands[1] != "on" && m_operands[1] != "off")
            return "touchback needs on or off, not '" + m_operands[1] + "'";
        return std::nullopt;
    }

    const std::vector<std::string>& m_arguments;
    std::size_t m_next = 0;
    std::vector<std::string> m_operands;
    std::vector<std::string> m_given;
    bool m_wantsHelp = false;
    bool m_wantsVersion = false;
    Options m_options;
};

/// The next of the numbers between dots; false when it is none up to 255.
bool takeOctet(std::string_view& text)
{
    const std::string_view octet = text.substr(0, text.find('.'));
    const bool isDecimal = !octet.empty() && octet.size() <= 3
        && std::all_of(octet.begin(), octet.end(), [](char c) { return c >= '0' && c <= '9'; });
    if (!isDecimal || (octet.size() > 1 && octet.front() == '0'))
        return false;
    int value = 0;
    for (const char c : octet)
        value = value * 10 + (c - '0');
    text.remove_prefix(octet.size());
    return value <= 255;
}

} // namespace

ParsedOptions parseOptions(const std::vector<std::string>& arguments)
{
    return CommandLine(arguments).parse();
}

bool isIPv4Text(std::string_view text)
{
    for (int octet = 0; octet < 4; ++octet) {
        if (octet > 0) {
            if (!text.starts_with('.'))
                return false;
            text.remove_prefix(1);
        }
        if (!takeOctet(text))
            return false;
    }
    return text.empty();
}

} // namespace companion::cli
