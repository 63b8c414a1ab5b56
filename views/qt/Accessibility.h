#pragma once

namespace companion {

/// Makes the program's own controls known to screen readers: their roles, states and actions. Called once, before
/// the first window.
void installAccessibility();

} // namespace companion
