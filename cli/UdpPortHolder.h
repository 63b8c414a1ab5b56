#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace companion::cli {

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

} // namespace companion::cli
