#pragma once

#include <functional>

class QWidget;

namespace companion {

/// Calls `then` once, when `widget` has been painted for the first time and the picture is on its way to the screen.
/// What takes its time and is not needed for that picture belongs there. Main thread.
void afterFirstPaint(QWidget& widget, std::function<void()> then);

} // namespace companion
