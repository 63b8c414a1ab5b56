#include "app/Options.h"

#include <algorithm>

namespace companion {

namespace {

bool isHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool isPanelText(const std::string& text)
{
    if (std::count(text.begin(), text.end(), '|') != 2)
        return false;
    const std::string address = text.substr(text.rfind('|') + 1);
    return address.size() == 8 && std::all_of(address.begin(), address.end(), isHexDigit);
}

/// Takes one option's value into `options`; an error message when it cannot be.
std::optional<std::string> take(Options& options, const std::string& name, const std::string& value)
{
    if (name == "--interface") {
        options.interfaceName = value;
    } else if (name == "--screen") {
        options.screenName = value;
    } else if (name == "--panel") {
        if (!isPanelText(value))
            return "--panel takes 'model|name|hexaddress' with eight hexadecimal digits, not '" + value + "'";
        options.panels.push_back(value);
    } else if (value != "any" && value != "panel") {
        return "--touch-from takes 'any' or 'panel', not '" + value + "'";
    } else {
        options.touchFrom = value == "panel" ? TouchSource::panel : TouchSource::any;
    }
    return std::nullopt;
}

bool takesValue(const std::string& name)
{
    return name == "--interface" || name == "--screen" || name == "--panel" || name == "--touch-from";
}

} // namespace

ParsedOptions parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        if (argument == "--help" || argument == "-h")
            return HelpWanted{};
        if (argument == "--version")
            return VersionWanted{};

        const std::size_t equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (!takesValue(name))
            return BadUsage{"unknown argument '" + argument + "'"};
        const bool isJoined = equals != std::string::npos;
        if (!isJoined && i + 1 == arguments.size())
            return BadUsage{name + " needs a value"};
        const std::string value = isJoined ? argument.substr(equals + 1) : arguments[++i];
        if (value.empty())
            return BadUsage{name + " needs a value"};
        if (const auto error = take(options, name, value))
            return BadUsage{*error};
    }
    return options;
}

std::string_view helpText()
{
    return R"(Usage: panel-companion [OPTION]...
Find an interactive panel on the network, pair with it, and let touches made on it work this computer.

  --interface NAME      tell panels the address of this network interface
                        (default: the one that leads to the paired panel)
  --screen NAME         touches reach this screen (default: the primary one)
  --panel 'MODEL|NAME|HEXADDRESS'
                        list a panel as if it had been announced, for networks that
                        block multicast; the address is eight hexadecimal digits,
                        0A00020F for 10.0.2.15; may be given several times
  --touch-from any|panel
                        take touches from anywhere (default), or only from the
                        address of the paired panel
  --version             print the version and exit
  --help                print this text and exit
)";
}

} // namespace companion
