#pragma once

#include <chrono>
#include <string>

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

} // namespace companion::cli
