#pragma once

namespace companion {

/// Whether a dialog, a menu or a pop-up is open: what `QtMainQueue` skips the ticks of its timers for.
bool isTrackingWidgets();

} // namespace companion
