#pragma once

#include "cli/UdpPortHolder.h"

#include <filesystem>

namespace companion::cli {

/// Reads the tables and the open files of processes under /proc: see proc(5). Only root sees those of other users.
class ProcUdpPortHolder : public UdpPortHolder {
public:
    explicit ProcUdpPortHolder(std::filesystem::path root = "/proc");

    std::vector<PortHolder> holdersOf(std::uint16_t port) const override;

private:
    std::filesystem::path m_root;
};

} // namespace companion::cli
