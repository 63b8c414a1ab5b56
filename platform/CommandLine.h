#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// One option of a program: how it is written, what the help says about it, where its value goes.
struct CommandLineOption {
    std::string name;      ///< "--panel"
    std::string valueName; ///< As in the help; "" for an option that takes no value.
    std::string help;      ///< May have several lines; no line end at the end.
    /// Called with each value given, which is never empty, or with "" when there is none to take. Returns what is
    /// wrong with the value, in one line.
    std::function<std::optional<std::string>(const std::string& value)> accept;
};

CommandLineOption flagOption(std::string name, std::string help, bool& target);

/// `Text` is a std::string or an optional one.
template <typename Text>
CommandLineOption textOption(std::string name, std::string valueName, std::string help, Text& target)
{
    return {std::move(name), std::move(valueName), std::move(help),
        [&target](const std::string& value) -> std::optional<std::string> {
            target = value;
            return std::nullopt;
        }};
}

struct ParsedCommandLine {
    bool wantsHelp = false;    ///< "--help" or "-h", which every program has
    bool wantsVersion = false; ///< "--version", likewise
    std::vector<std::string> givenOptions;
    std::vector<std::string> operands;
    std::optional<std::string> problem; ///< One printable line without its line end.
};

/// Reads the arguments behind the program's name. Options may stand anywhere; "--name value" and "--name=value" mean
/// the same; what follows "--" are operands.
ParsedCommandLine parseCommandLine(
    const std::vector<CommandLineOption>& options, const std::vector<std::string>& arguments);

/// "  term    help" with its line end; the help begins at `column`, further lines below its beginning.
std::string helpEntry(const std::string& term, const std::string& help, std::size_t column);
std::string helpEntry(const CommandLineOption& option, std::size_t column);

/// The entries of `options`, then those of "--version" and "--help".
std::string helpEntries(const std::vector<CommandLineOption>& options, std::size_t column);

} // namespace companion
