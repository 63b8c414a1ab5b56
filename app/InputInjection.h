#pragma once

#include "platform/Log.h"
#include "platform/MouseEventPoster.h"

#include <memory>

namespace companion {

class QtScreen;

/// Picks how touches become input events on this desktop, and logs the choice with its reason in one line. Where there is
/// no way, touches are dropped, which is logged at the first one. Both must outlive the poster.
std::unique_ptr<MouseEventPoster> openMouseEventPoster(const QtScreen& screen, SystemLog& log);

} // namespace companion
