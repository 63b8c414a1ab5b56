#include "platform/CommandLine.h"

#include "platform/Text.h"

#include <algorithm>
#include <utility>

namespace companion {

namespace {

using Problem = std::optional<std::string>;
using Arguments = std::vector<std::string>;

/// Reads the option `argument`, and its value from `next` on unless an equals sign joins the two.
Problem takeOption(const std::vector<CommandLineOption>& options, const std::string& argument,
    Arguments::const_iterator& next, Arguments::const_iterator end, std::vector<std::string>& given)
{
    const std::size_t equals = argument.find('=');
    const bool isJoined = equals != std::string::npos;
    const std::string name = argument == "-h" ? "--help" : argument.substr(0, equals);
    const auto option = std::find_if(
        options.begin(), options.end(), [&](const CommandLineOption& each) { return each.name == name; });
    if (option == options.end())
        return "unknown option '" + argument + "'";
    given.push_back(name);
    if (option->valueName.empty())
        return isJoined ? name + " takes no value" : option->accept("");
    const bool isMissing = !isJoined && next == end;
    const std::string value = isMissing ? "" : isJoined ? argument.substr(equals + 1) : *next++;
    return value.empty() ? name + " needs a value" : option->accept(value);
}

} // namespace

CommandLineOption flagOption(std::string name, std::string help, bool& target)
{
    return {std::move(name), "", std::move(help), [&target](const std::string&) -> Problem {
                target = true;
                return std::nullopt;
            }};
}

ParsedCommandLine parseCommandLine(std::vector<CommandLineOption> options, const Arguments& arguments)
{
    ParsedCommandLine parsed;
    options.push_back(flagOption("--help", "", parsed.wantsHelp));
    options.push_back(flagOption("--version", "", parsed.wantsVersion));
    for (auto next = arguments.begin(); next != arguments.end();) {
        const std::string& argument = *next++;
        if (argument == "--") {
            parsed.operands.insert(parsed.operands.end(), next, arguments.end());
            break;
        }
        if (argument.size() < 2 || argument.front() != '-') {
            parsed.operands.push_back(argument);
            continue;
        }
        const Problem problem = takeOption(options, argument, next, arguments.end(), parsed.givenOptions);
        if (problem && !parsed.problem)
            parsed.problem = printable(*problem);
    }
    return parsed;
}

std::string helpEntry(const std::string& term, const std::string& help, std::size_t column)
{
    std::string text = "  " + term;
    text +=
        text.size() + 2 > column ? "\n" + std::string(column, ' ') : std::string(column - text.size(), ' ');
    for (const char c : help) {
        text += c;
        if (c == '\n')
            text += std::string(column, ' ');
    }
    return text + "\n";
}

std::string helpEntry(const CommandLineOption& option, std::size_t column)
{
    const std::string value = option.valueName.empty() ? "" : " " + option.valueName;
    return helpEntry(option.name + value, option.help, column);
}

std::string helpEntries(const std::vector<CommandLineOption>& options, std::size_t column)
{
    std::string text;
    for (const CommandLineOption& option : options)
        text += helpEntry(option, column);
    return text + helpEntry("--version", "print the version and exit", column)
        + helpEntry("--help", "print this text and exit", column);
}

} // namespace companion
