#pragma once

namespace companion {

/// Shows a ring in the control that has the focus while the user works with the keyboard: when a key was pressed later
/// than any mouse button. Called once, before the first window.
///
/// A control's properties "focusRingRadius" (8 points without it) and "focusRingOnDark" say how its ring looks.
void installFocusRing();

} // namespace companion
