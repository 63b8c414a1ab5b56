#include "simulator/Options.h"

#include "simulator/InstanceName.h"
#include "simulator/Text.h"

#include <arpa/inet.h>
#include <array>
#include <optional>
#include <utility>

namespace companion::simulator {

const char* const helpText = R"(Usage: panel-simulator [OPTION]...
A panel that exists only in software: it announces itself, answers like a panel,
takes uploads and sends touches. docs/panel-protocol.md describes how to drive it.

  --model TEXT        model in the announcement (default: Meridian 65)
  --name TEXT         name in the announcement (default: Simulated panel)
  --address IPV4      address to listen on and to announce
                      (default: that of the default route, else 127.0.0.1)
  --service-port N    port of the panel service (default: 5000; 0: any free one)
  --upload-port N     port of the upload service (default: 5505; 0: any free one)
  --uploads DIR       keep uploaded files there (default: they are only counted)
  --touch-port N      UDP port that touches are sent to (default: 41863)
  --replay FILE       play recorded touches to whoever turns touchback on
  --no-announce       no announcement on the network
  --version           print the version
  --help              print this

Exit status: 0 after SIGINT, SIGTERM or SIGHUP, 1 if it cannot start, 2 for bad usage.
)";

namespace {

using Problem = std::optional<std::string>;

constexpr std::array<std::pair<std::string_view, std::string Options::*>, 5> textOptions{
    {{"--model", &Options::model}, {"--name", &Options::name}, {"--address", &Options::address},
        {"--uploads", &Options::uploads}, {"--replay", &Options::replay}}};

constexpr std::array<std::pair<std::string_view, std::uint16_t Options::*>, 3> portOptions{
    {{"--service-port", &Options::servicePort}, {"--upload-port", &Options::uploadPort},
        {"--touch-port", &Options::touchPort}}};

bool takesNoValue(std::string_view name)
{
    return name == "--no-announce" || name == "--help" || name == "--version";
}

void setFlag(Options& options, std::string_view name)
{
    options.announces &= name != "--no-announce";
    options.wantsHelp |= name == "--help";
    options.wantsVersion |= name == "--version";
}

bool isKnown(std::string_view name)
{
    for (const auto& option : textOptions)
        if (option.first == name)
            return true;
    for (const auto& option : portOptions)
        if (option.first == name)
            return true;
    return takesNoValue(name);
}

Problem setValue(Options& options, const std::string& name, const std::string& value)
{
    for (const auto& [text, member] : textOptions)
        if (text == name) {
            options.*member = value;
            return value.empty() ? Problem(name + " needs a text that is not empty") : std::nullopt;
        }
    for (const auto& [text, member] : portOptions)
        if (text == name) {
            const auto port = parseCount(value, 65535);
            options.*member = static_cast<std::uint16_t>(port.value_or(0));
            return port ? std::nullopt : Problem(name + " needs a number from 0 to 65535");
        }
    return std::nullopt;
}

/// A host's own address: neither the wildcard nor multicast nor broadcast.
bool isHostAddress(const std::string& text)
{
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        return false;
    const std::uint32_t value = ntohl(address.s_addr);
    return value != 0 && (value >> 28) < 0xE;
}

Problem problemOfWhole(const Options& options)
{
    if (!options.address.empty() && !isHostAddress(options.address))
        return "--address needs the IPv4 address of a host, such as 192.168.1.20";
    if (options.touchPort == 0)
        return "--touch-port needs a number from 1 to 65535";
    return InstanceName(options.model, options.name, "00000000").problem();
}

} // namespace

std::variant<Options, std::string> parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const auto equals = arguments[i].find('=');
        const std::string name = arguments[i].substr(0, equals);
        if (!isKnown(name))
            return "unknown option \"" + printable(arguments[i]) + "\"";
        const bool hasValue = equals != std::string::npos;
        if (takesNoValue(name)) {
            if (hasValue)
                return name + " takes no value";
            setFlag(options, name);
            continue;
        }
        if (!hasValue && i + 1 == arguments.size())
            return name + " needs a value";
        if (auto problem =
                setValue(options, name, hasValue ? arguments[i].substr(equals + 1) : arguments[++i]))
            return *problem;
    }
    if (auto problem = problemOfWhole(options); problem && !options.wantsHelp && !options.wantsVersion)
        return *problem;
    return options;
}

} // namespace companion::simulator
