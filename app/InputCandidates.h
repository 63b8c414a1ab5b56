#pragma once

#include "app/InputInjection.h"

namespace companion {

class QtScreen;

/// Whether touches have to reach programs that use Wayland.
bool isWaylandSession();

/// What this desktop may offer, best first. `screen` and `log` must outlive what is opened. With `remembersScreenAccess`
/// the desktop's permission holds for the next runs, too.
std::vector<InputCandidate> inputCandidates(const QtScreen& screen, SystemLog& log,
    bool remembersScreenAccess, const InputInjection::StatusChanged& statusChanged);

} // namespace companion
