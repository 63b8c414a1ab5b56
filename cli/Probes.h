#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace companion::cli {

enum class MdnsDaemonState { running, noBus, silentBus, noDaemon, silentDaemon };

struct MdnsDaemonFacts {
    MdnsDaemonState state = MdnsDaemonState::noBus;
    std::string detail; ///< The daemon's version, or the system's words for what is wrong.
};

/// Looks whether there is somebody to find panels by.
class MdnsDaemon {
public:
    virtual ~MdnsDaemon() = default;

    /// Starts the daemon where the bus can. Waits, but no longer than `time`.
    virtual MdnsDaemonFacts look(std::chrono::milliseconds time) = 0;
};

/// One line on why no panel can be found; "" when one can.
std::string whyNoPanelCanBeFound(const MdnsDaemonFacts& facts);

/// A program that has a UDP port.
struct PortHolder {
    std::string program;
    int processId = 0;
};

/// Tells who has a UDP port of this computer, as far as the system lets us know.
class UdpPortHolder {
public:
    virtual ~UdpPortHolder() = default;

    /// Empty when nobody has it, and when it is not this user's to know.
    virtual std::vector<PortHolder> holdersOf(std::uint16_t port) const = 0;
};

/// Whether a socket's error, in the system's words and its language, is that somebody has the port.
bool saysPortIsTaken(const std::string& error);

/// "socat (process 123)", several with " and " in between; or words for a holder that is not to be known.
std::string holdersText(const std::vector<PortHolder>& holders);

/// What a connection to a port of a panel came to.
struct PortAnswer {
    std::string address;
    std::uint16_t port = 0;
    std::string error; ///< The system's words; "" when it was answered.
};

/// What there is to show windows on and to post input events to.
struct DisplayFacts {
    enum class X { none, noLibrary, cannotOpen, silent, noXTest, usable };

    X x = X::none;
    std::string display;        ///< $DISPLAY
    std::string waylandDisplay; ///< $WAYLAND_DISPLAY
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
