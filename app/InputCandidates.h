#pragma once

#include "app/InputInjection.h"

namespace companion {

class QtScreen;

/// Whether touches have to reach programs that use Wayland.
bool isWaylandSession();

/// What this desktop may offer, best first. Both arguments must outlive what is opened.
std::vector<InputCandidate> inputCandidates(const QtScreen& screen, SystemLog& log);

} // namespace companion
