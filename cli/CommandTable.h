#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace companion::cli {

enum class CommandName { discover, ping, touchback, trigger, upload, touches, doctor };

struct OptionEntry {
    std::string name;
    std::string value; ///< What stands for the value in the help; "" for an option that takes none.
    std::string help;  ///< Lines without a line end at the end.
};

struct CommandEntry {
    CommandName command;
    std::string name;
    std::string operand; ///< As in the help; "" when there is none.
    std::string help;
    bool needsPanel = false; ///< One must be told by address or by name.
    std::vector<OptionEntry> options;
};

/// Every command with the options of its own: what is parsed, and what the help, the manual page and the shells'
/// completion tell.
const std::vector<CommandEntry>& commandTable();
const CommandEntry& entryOf(CommandName command);

/// The options that every command takes.
const std::vector<OptionEntry>& commonOptions();

/// The texts of `--help`, with their line ends.
std::string helpText();
std::string helpText(CommandName command);

} // namespace companion::cli
