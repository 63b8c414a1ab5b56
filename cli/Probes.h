#pragma once

#include "platform/InputWay.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

enum class MdnsDaemonState { running, noBus, silentBus, noDaemon, silentDaemon };

struct MdnsDaemonFacts {
    MdnsDaemonState state = MdnsDaemonState::noBus;
    std::string detail; ///< The daemon's version, or the system's words for what is wrong.
};

/// One line on why no panel can be found; "" when one can.
std::string whyNoPanelCanBeFound(const MdnsDaemonFacts& facts);

/// A program that has bound a UDP port.
struct PortHolder {
    std::string program;
    int processId = 0;
};

/// Whether a socket's error, in the system's words and its language, says that the port is in use.
bool saysPortIsTaken(const std::string& error);

/// "socat (process 123)", several with " and " in between; or a phrase for an unknown holder.
std::string holdersText(const std::vector<PortHolder>& holders);

/// The result of connecting to a port of a panel.
struct PortAnswer {
    std::string address;
    std::uint16_t port = 0;
    std::string error; ///< The system's words; "" when it was answered.
};

/// The displays that this session offers.
struct DisplayFacts {
    enum class X { none, cannotOpen, silent, noXTest, usable };

    X x = X::none;
    std::string display;                            ///< $DISPLAY
    std::string waylandDisplay;                     ///< $WAYLAND_DISPLAY
    std::optional<InputWay> wayland = std::nullopt; ///< What native Wayland programs can be reached by.
};

/// What commands find out about this computer and its network. Each call waits no longer than its `time`. Main thread only.
struct Probes {
    /// Starts the mDNS daemon where the bus can.
    std::function<MdnsDaemonFacts(std::chrono::milliseconds time)> mdnsDaemon;

    /// Which programs have bound the port. Empty when it is free, or bound by another user's program.
    std::function<std::vector<PortHolder>(std::uint16_t port)> udpPortHolders;

    /// Connects to all at the same time; one answer for each address and port, in this order.
    std::function<std::vector<PortAnswer>(const std::vector<std::string>& addresses,
        const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time)>
        tcpPorts;

    /// The displays that programs of this session would use.
    std::function<DisplayFacts(std::chrono::milliseconds time)> displays;
};

} // namespace companion::cli
