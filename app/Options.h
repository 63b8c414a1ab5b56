#pragma once

#include "dashboard/TouchSource.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace companion {

/// What the command line of `panel-companion` asks for.
struct Options {
    std::optional<std::string> interfaceName;
    std::optional<std::string> screenName;
    /// Each "model|name|hexaddress", to be listed as if it had been announced.
    std::vector<std::string> panels;
    TouchSource touchFrom = TouchSource::any;
    /// Whether a fatal error is followed by a fresh run only if the user starts one.
    bool hasNoRestart = false;
    bool remembersScreenAccess = false;
    /// Whether a program that runs already is left alone.
    bool isNewInstance = false;
    std::vector<std::string> files; ///< To be sent to the panel: paths, or "file:" URLs.
    bool hasOptions = false;        ///< Whether anything but files was given.
};

struct HelpWanted { };
struct VersionWanted { };
struct BadUsage {
    std::string message; ///< One line without its line end.
};

using ParsedOptions = std::variant<Options, HelpWanted, VersionWanted, BadUsage>;

/// Reads the arguments behind the program's name.
ParsedOptions parseOptions(const std::vector<std::string>& arguments);

/// The text of `--help`, with its line end.
std::string helpText();

} // namespace companion
