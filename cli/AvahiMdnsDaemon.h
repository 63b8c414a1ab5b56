#pragma once

#include "cli/MdnsDaemon.h"

namespace companion::cli {

/// Asks the system bus for the Avahi daemon.
class AvahiMdnsDaemon : public MdnsDaemon {
public:
    MdnsDaemonFacts look(std::chrono::milliseconds time) override;
};

} // namespace companion::cli
