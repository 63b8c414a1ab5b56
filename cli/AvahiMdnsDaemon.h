#pragma once

#include "cli/BoundedCalls.h"
#include "cli/MdnsDaemon.h"

namespace companion::cli {

/// Asks the system bus for the Avahi daemon.
class AvahiMdnsDaemon : public MdnsDaemon {
public:
    explicit AvahiMdnsDaemon(BoundedCalls& calls)
        : m_calls(calls)
    {
    }

    MdnsDaemonFacts look(std::chrono::milliseconds time) override;

private:
    BoundedCalls& m_calls;
};

} // namespace companion::cli
