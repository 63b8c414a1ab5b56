#pragma once

#include "cli/BoundedCalls.h"
#include "cli/Probes.h"

#include <filesystem>

namespace companion::cli {

/// Asks the system bus for the Avahi daemon.
class AvahiMdnsDaemon : public MdnsDaemon {
public:
    MdnsDaemonFacts look(std::chrono::milliseconds time) override;
};

/// Connects by non-blocking sockets, and closes them at once.
class PosixTcpProbe : public TcpProbe {
public:
    std::vector<PortAnswer> connectTo(const std::vector<std::string>& addresses,
        const std::vector<std::uint16_t>& ports, std::chrono::milliseconds time) override;
};

/// Reads the tables and the open files of processes under /proc: see proc(5). Only root sees those of other users.
class ProcUdpPortHolder : public UdpPortHolder {
public:
    explicit ProcUdpPortHolder(std::filesystem::path root = "/proc");

    std::vector<PortHolder> holdersOf(std::uint16_t port) const override;

private:
    std::filesystem::path m_root;
};

/// Connects to the session's Wayland compositor, portal and X server.
class DesktopDisplayProbe : public DisplayProbe {
public:
    explicit DesktopDisplayProbe(BoundedCalls& calls)
        : m_calls(calls)
    {
    }

    DisplayFacts look(std::chrono::milliseconds time) override;

private:
    BoundedCalls& m_calls;
};

} // namespace companion::cli
