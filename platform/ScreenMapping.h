#pragma once

#include "platform/Geometry.h"

namespace companion {

/// How points of the main screen's space become positions in the window server's root window.
///
/// A point (x, y) lies at (originX + x × scale, originY + y × scale), in root pixels.
struct ScreenMapping {
    double originX = 0; ///< The screen's left edge in the root window, in root pixels.
    double originY = 0; ///< Its top edge, in root pixels.
    double scale = 1;   ///< Root pixels for each point.
    Size size;          ///< Width and height of the screen, in points.

    bool operator==(const ScreenMapping&) const = default;
};

} // namespace companion
