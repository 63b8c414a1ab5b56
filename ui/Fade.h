#pragma once

#include <chrono>
#include <functional>

class QRect;
class QWidget;

namespace companion {

inline constexpr std::chrono::milliseconds fadeDuration{160};

/// Whether changes may be shown by motion. Not before the desktop's wish is known.
void allowMotion(bool isAllowed);
bool isMotionAllowed();

/// Runs `change`, which alters how that area of the view looks. How it looked before fades out over it, if motion is
/// allowed and somebody can see it; the controls below take the mouse and the keyboard at once. Nothing is left running.
void fade(QWidget& view, const QRect& area, const std::function<void()>& change);

} // namespace companion
