#pragma once

class QWidget;

namespace companion {

/// The window that a dialog belongs to: the active one, or what lies beneath it if that is a popover, which would go
/// away and take the dialog along. Null when no window is active.
QWidget* windowForDialogs();

} // namespace companion
