#pragma once

#include "platform/Geometry.h"
#include "platform/ScreenMapping.h"

#include <vector>

namespace companion {

/// A pixel of the root window. What the wire carries is 16 bits, signed.
struct RootPixel {
    int x = 0;
    int y = 0;

    bool operator==(const RootPixel&) const = default;
};

/// The part of the root window that a monitor shows.
struct RootArea {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const RootArea&) const = default;
};

/// The one of the server's monitors that the main screen is. Its size in points, being rounded, does not tell its pixels: at
/// scale 2, 641 of them are 321 points, as are 642. The whole pixels in that size when it is none of them.
RootArea areaOf(const ScreenMapping& mapping, const std::vector<RootArea>& monitors);

/// The pixel nearest to a point of the main screen's space, which lies in `area` (halves away from zero). Points from 0 to
/// the screen's size, both included, stay in it, so that its right and bottom edges are not the first pixels of the next
/// monitor; others keep their distance. Coordinates saturate at the 16 bits of the protocol, which would wrap.
RootPixel toRootPixel(Point point, const ScreenMapping& mapping, const RootArea& area);

/// The pixel of a root window of that many pixels, at least one, which is nearest to `pixel`.
RootPixel clampedTo(RootPixel pixel, int width, int height);

} // namespace companion
