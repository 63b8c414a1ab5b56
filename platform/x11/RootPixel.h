#pragma once

#include "platform/Geometry.h"
#include "platform/ScreenMapping.h"

namespace companion {

/// A pixel of the root window. What the wire carries is 16 bits, signed.
struct RootPixel {
    int x = 0;
    int y = 0;

    bool operator==(const RootPixel&) const = default;
};

/// The pixel nearest to a point of the main screen's space (halves away from zero). Points from 0 to the screen's size,
/// both included, stay on the screen, so that its right and bottom edges are not the first pixels of the next monitor;
/// others keep their distance. Coordinates saturate at the 16 bits of the protocol, which would wrap.
RootPixel toRootPixel(Point point, const ScreenMapping& mapping);

/// The pixel of a root window of that many pixels, at least one, which is nearest to `pixel`.
RootPixel clampedTo(RootPixel pixel, int width, int height);

} // namespace companion
