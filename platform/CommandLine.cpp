#include "platform/CommandLine.h"

#include "platform/Text.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <utility>

namespace companion {

namespace {

using Problem = std::optional<std::string>;

/// The library's own message differs from version to version, but always begins with the option's name.
std::string messageOf(const CLI::Error& error)
{
    const std::string what = error.what();
    return what.substr(0, what.find(':')) + " needs a value";
}

CLI::Option* addOption(CLI::App& app, const CommandLineOption& option)
{
    if (option.valueName.empty())
        return app.add_flag(option.name);
    return app.add_option(option.name)
        ->expected(1)
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
}

Problem acceptValues(const CommandLineOption& option, const std::vector<std::string>& values)
{
    for (const std::string& value : values) {
        const bool isFlag = option.valueName.empty();
        if (!isFlag && value.empty())
            return option.name + " needs a value";
        if (Problem problem = option.accept(isFlag ? "" : value))
            return problem;
    }
    return std::nullopt;
}

/// One pass over one command line.
class Parser {
public:
    explicit Parser(std::vector<CommandLineOption> options)
        : m_options(std::move(options))
    {
        m_options.push_back(flagOption("--help", "", m_parsed.wantsHelp));
        m_options.push_back(flagOption("--version", "", m_parsed.wantsVersion));
        m_app.set_help_flag("");
        m_app.allow_extras();
        m_app.add_flag("-h", m_parsed.wantsHelp);
        for (const CommandLineOption& option : m_options)
            m_entries.push_back(addOption(m_app, option));
    }

    ParsedCommandLine parse(const std::vector<std::string>& arguments)
    {
        Problem problem = checkJoinedValues(arguments);
        if (!problem)
            problem = readAll(arguments);
        if (const Problem other = acceptAll(); !problem)
            problem = other;
        if (problem)
            m_parsed.problem = printable(*problem);
        return std::move(m_parsed);
    }

private:
    /// The library would read "--flag=no", and would take the next argument as the value of "--name=".
    Problem checkJoinedValues(const std::vector<std::string>& arguments) const
    {
        for (const std::string& argument : arguments) {
            if (argument == "--")
                break;
            for (const CommandLineOption& option : m_options) {
                if (option.valueName.empty() && argument.starts_with(option.name + "="))
                    return option.name + " takes no value";
                if (!option.valueName.empty() && argument == option.name + "=")
                    return option.name + " needs a value";
            }
        }
        return std::nullopt;
    }

    Problem readAll(std::vector<std::string> arguments)
    {
        std::reverse(arguments.begin(), arguments.end()); // as the library wants them
        try {
            m_app.parse(arguments);
        } catch (const CLI::Error& error) {
            return messageOf(error);
        }
        return takeOperands(m_app.remaining());
    }

    /// `remaining` holds all that is no option or its value, the first "--" included.
    Problem takeOperands(const std::vector<std::string>& remaining)
    {
        const auto mark = std::find(remaining.begin(), remaining.end(), "--");
        const auto unknown = std::find_if(remaining.begin(), mark,
            [](const std::string& argument) { return argument.size() > 1 && argument.front() == '-'; });
        if (unknown != mark)
            return "unknown option '" + *unknown + "'";
        m_parsed.operands.assign(remaining.begin(), mark);
        if (mark != remaining.end())
            m_parsed.operands.insert(m_parsed.operands.end(), mark + 1, remaining.end());
        return std::nullopt;
    }

    Problem acceptAll()
    {
        for (std::size_t i = 0; i < m_options.size(); ++i) {
            if (m_entries[i]->count() > 0)
                m_parsed.givenOptions.push_back(m_options[i].name);
            if (Problem problem = acceptValues(m_options[i], m_entries[i]->results()))
                return problem;
        }
        return std::nullopt;
    }

    std::vector<CommandLineOption> m_options; ///< Those of the program, and those that every program has.
    ParsedCommandLine m_parsed;
    CLI::App m_app;
    std::vector<CLI::Option*> m_entries; ///< One for each of `m_options`.
};

} // namespace

CommandLineOption flagOption(std::string name, std::string help, bool& target)
{
    return {std::move(name), "", std::move(help), [&target](const std::string&) -> Problem {
                target = true;
                return std::nullopt;
            }};
}

ParsedCommandLine parseCommandLine(
    const std::vector<CommandLineOption>& options, const std::vector<std::string>& arguments)
{
    return Parser(options).parse(arguments);
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
