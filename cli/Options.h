#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace companion::cli {

enum class CommandName { discover, ping, touchback, trigger, upload, touches, doctor };

/// As on the command line: "discover".
std::string nameText(CommandName command);

/// What the command line of `panelctl` asks for. Times are absent where the command has one of its own.
struct Options {
    CommandName command = CommandName::doctor;

    std::optional<std::string> panelAddress; ///< Dotted IPv4; never together with a name.
    std::optional<std::string> panelName;    ///< As announced, letter by letter.
    std::optional<std::string> interfaceName;
    std::optional<std::chrono::milliseconds> timeout;
    bool isJson = false;
    bool isVerbose = false;

    std::chrono::milliseconds searchTime = std::chrono::seconds(5); ///< discover
    bool switchesOn = false;                                        ///< touchback
    bool isHDMI = false;                                            ///< touchback
    std::string file;                                               ///< upload
    std::optional<std::string> recording;                           ///< touches: a file to write
    std::uint64_t mostRecordedBytes = 100 << 20;                    ///< touches
    bool awaitsTouches = false;                                     ///< doctor
};

/// The help of one command, or of all of them.
struct HelpWanted {
    std::optional<CommandName> command;
};
struct VersionWanted { };
struct BadUsage {
    std::string message; ///< One line without its line end.
};

using ParsedOptions = std::variant<Options, HelpWanted, VersionWanted, BadUsage>;

/// Reads the arguments behind the program's name.
ParsedOptions parseOptions(const std::vector<std::string>& arguments);

/// The text of `--help`, of one command or of all, with its line ends.
std::string helpText(std::optional<CommandName> command = std::nullopt);

/// Four decimal numbers up to 255 with dots in between, without leading zeros.
bool isIPv4Text(const std::string& text);

} // namespace companion::cli
