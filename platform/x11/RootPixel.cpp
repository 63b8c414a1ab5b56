#include "platform/x11/RootPixel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace companion {

namespace {

// Held while it is still floating point: a conversion out of range would be undefined. Written so that NaN, which
// is neither above nor below, becomes the lowest value too.
int toWireCoordinate(double pixels)
{
    constexpr double lowest = std::numeric_limits<std::int16_t>::min();
    constexpr double highest = std::numeric_limits<std::int16_t>::max();
    if (!(pixels > lowest))
        return static_cast<int>(lowest);
    return static_cast<int>(std::lround(std::min(pixels, highest)));
}

} // namespace

RootPixel toRootPixel(Point point, const ScreenMapping& mapping)
{
    return {toWireCoordinate(mapping.originX + point.x * mapping.scale),
        toWireCoordinate(mapping.originY + point.y * mapping.scale)};
}

RootPixel clampedTo(RootPixel pixel, int width, int height)
{
    return {std::clamp(pixel.x, 0, std::max(width, 1) - 1), std::clamp(pixel.y, 0, std::max(height, 1) - 1)};
}

} // namespace companion
