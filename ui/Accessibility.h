#pragma once

class QWidget;

namespace companion {

/// Whether something modal blocks the view's window. A screen reader's presses reach it even so.
bool isUnderAlert(const QWidget& view);

/// Makes the program's own controls known to screen readers: their roles, states and actions. Called once, before
/// the first window.
void installAccessibility();

} // namespace companion
