#pragma once

namespace companion {

/// Shows a ring in the control that has the focus, while the keyboard is what moves it: from Tab, Backtab or a shortcut
/// on, until a mouse button is pressed. Called once, before the first window.
///
/// A control's properties "focusRingRadius" (8 points without it) and "focusRingOnDark" say how its ring looks.
void installFocusRing();

} // namespace companion
