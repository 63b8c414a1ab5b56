#include "simulator/Options.h"

#include "platform/CommandLine.h"
#include "platform/Text.h"
#include "simulator/InstanceName.h"
#include "simulator/Text.h"

#include <arpa/inet.h>
#include <optional>

namespace companion::simulator {

namespace {

using Problem = std::optional<std::string>;

constexpr std::size_t helpColumn = 22;

CommandLineOption portOption(std::string name, std::string help, std::uint64_t minimum, std::uint16_t& target)
{
    const auto accept = [name, minimum, &target](const std::string& value) -> Problem {
        const auto port = parseCount(value, 65535);
        target = static_cast<std::uint16_t>(port.value_or(0));
        return port && *port >= minimum
            ? std::nullopt
            : Problem(name + " needs a number from " + std::to_string(minimum) + " to 65535");
    };
    return {name, "N", std::move(help), accept};
}

/// Neither the wildcard nor multicast nor broadcast.
bool isHostAddress(const std::string& text)
{
    in_addr address{};
    if (inet_pton(AF_INET, text.c_str(), &address) != 1)
        return false;
    const std::uint32_t value = ntohl(address.s_addr);
    return value != 0 && (value >> 28) < 0xE;
}

CommandLineOption addressOption(std::string& target)
{
    const auto accept = [&target](const std::string& value) {
        target = value;
        return isHostAddress(value)
            ? std::nullopt
            : Problem("--address needs the IPv4 address of a host, such as 192.168.1.20");
    };
    return {"--address", "IPV4",
        "address to listen on and to announce\n(default: that of the default route, else 127.0.0.1)", accept};
}

std::vector<CommandLineOption> optionsInto(Options& options)
{
    return {
        textOption("--model", "TEXT", "model in the announcement (default: Meridian 65)", options.model),
        textOption("--name", "TEXT", "name in the announcement (default: Simulated panel)", options.name),
        addressOption(options.address),
        portOption("--service-port", "port of the panel service (default: 5000; 0: any free one)", 0,
            options.servicePort),
        portOption("--upload-port", "port of the upload service (default: 5505; 0: any free one)", 0,
            options.uploadPort),
        textOption("--uploads", "DIR", "keep uploaded files there (default: they are only counted)",
            options.uploads),
        portOption(
            "--touch-port", "UDP port that touches are sent to (default: 41863)", 1, options.touchPort),
        textOption("--replay", "FILE", "play recorded touches to whoever turns touchback on", options.replay),
        flagOption("--no-announce", "no announcement on the network", options.noAnnounce),
    };
}

} // namespace

std::variant<Options, std::string> parseOptions(const std::vector<std::string>& arguments)
{
    Options options;
    const ParsedCommandLine parsed = parseCommandLine(optionsInto(options), arguments);
    options.wantsHelp = parsed.wantsHelp;
    options.wantsVersion = parsed.wantsVersion;
    if (options.wantsHelp || options.wantsVersion)
        return options;
    if (parsed.problem)
        return *parsed.problem;
    if (!parsed.operands.empty())
        return "unknown argument '" + printable(parsed.operands.front()) + "'";
    if (auto problem = InstanceName{options.model, options.name, "00000000"}.problem())
        return *problem;
    return options;
}

std::string helpText()
{
    Options options;
    return "Usage: panel-simulator [OPTION]...\n"
           "A panel that exists only in software: it announces itself, answers like a panel,\n"
           "takes uploads and sends touches. docs/panel-protocol.md describes how to drive it.\n\n"
        + helpEntries(optionsInto(options), helpColumn)
        + "\nExit status: 0 after SIGINT, SIGTERM or SIGHUP, 1 if it cannot start, 2 for bad usage.\n";
}

} // namespace companion::simulator
