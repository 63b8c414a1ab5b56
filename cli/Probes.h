#pragma once

#include "platform/InputWay.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace companion::cli {

enum class MdnsDaemonState { running, noBus, silentBus, noDaemon, silentDaemon };

struct MdnsDaemonFacts {
    MdnsDaemonState state = MdnsDaemonState::noBus;
    std::string detail; ///< The daemon's version, or the system's words for what is wrong.
};

/// Checks whether panels can be found: whether an mDNS daemon is running.
class MdnsDaemon {
public:
    virtual ~MdnsDaemon() = default;

    /// Starts the daemon where the bus can. Waits, but no longer than `time`.
    virtual MdnsDaemonFacts look(std::chrono::milliseconds time) = 0;
};

/// One line on why no panel can be found; "" when one can.
std::string whyNoPanelCanBeFound(const MdnsDaemonFacts& facts);

/// A program that has bound a UDP port.
struct PortHolder {
    std::string program;
    int processId = 0;
};

/// Finds out which programs have bound a UDP port, as far as this user may know.
class UdpPortHolder {
public:
    virtual ~UdpPortHolder() = default;

    /// Empty when the port is free, or bound by another user's program.
    virtual std::vector<PortHolder> holdersOf(std::uint16_t port) const = 0;
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

/// Connects to TCP ports of panels.
class TcpProbe {
public:
    virtual ~TcpProbe() = default;

    /// All at the same time, within `time`; one answer for each address and port, in this order.
    virtual std::vector<PortAnswer> connectTo(const std::vector<std::string>& addresses,
        const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time) = 0;
};

/// Looks at the display that programs of this session would use.
class DisplayProbe {
public:
    virtual ~DisplayProbe() = default;

    /// Waits, but no longer than `time`.
    virtual DisplayFacts look(std::chrono::milliseconds time) = 0;
};

} // namespace companion::cli
