#pragma once

#include "cli/DoctorProbes.h"

namespace companion::cli {

/// Connects by non-blocking sockets, and closes them at once.
class PosixTcpProbe : public TcpProbe {
public:
    std::vector<PortAnswer> connectTo(const std::vector<std::string>& addresses,
        const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time) override;
};

} // namespace companion::cli
