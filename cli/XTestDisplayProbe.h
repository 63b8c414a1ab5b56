#pragma once

#include "cli/BoundedCalls.h"
#include "cli/DoctorProbes.h"

namespace companion::cli {

/// Opens the session's X display by libxcb and libxcb-xtest, loaded for this alone: the other commands start without
/// them, and a computer that has neither runs the program all the same.
class XTestDisplayProbe : public DisplayProbe {
public:
    explicit XTestDisplayProbe(BoundedCalls& calls)
        : m_calls(calls)
    {
    }

    DisplayFacts look(std::chrono::milliseconds time) override;

private:
    BoundedCalls& m_calls;
};

} // namespace companion::cli
