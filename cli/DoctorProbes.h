#pragma once

#include "cli/ComputerChecks.h"
#include "cli/NetworkChecks.h"

#include <chrono>
#include <vector>

namespace companion::cli {

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
