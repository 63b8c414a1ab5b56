#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace companion::simulator {

/// What the command line sets.
struct Options {
    std::string model = "Meridian 65";
    std::string name = "Simulated panel";
    std::string address;              ///< dotted IPv4 text; "" for the default
    std::string uploads;              ///< a folder; "" to only count files
    std::string replay;               ///< a file with a recording; "" for none
    std::uint16_t servicePort = 5000; ///< 0 is any free port, here and for uploads
    std::uint16_t uploadPort = 5505;
    std::uint16_t touchPort = 41863;
    bool noAnnounce = false;
    bool wantsHelp = false;
    bool wantsVersion = false;
};

/// `arguments` are those after the program's name. Returns the options, or one line that says what is wrong.
std::variant<Options, std::string> parseOptions(const std::vector<std::string>& arguments);

std::string helpText();

} // namespace companion::simulator
