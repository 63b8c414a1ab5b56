#include "platform/x11/RootPixel.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace companion {

namespace {

// Saturated while it is still floating point: a conversion out of range would be undefined. Written so that NaN, which
// is neither above nor below, becomes the lowest value too.
int toWireCoordinate(double pixels)
{
    constexpr double lowest = std::numeric_limits<std::int16_t>::min();
    constexpr double highest = std::numeric_limits<std::int16_t>::max();
    if (!(pixels > lowest))
        return static_cast<int>(lowest);
    return static_cast<int>(std::lround(std::min(pixels, highest)));
}

int toRootCoordinate(double point, double origin, double size, double scale)
{
    const int pixel = toWireCoordinate(origin + point * scale);
    const bool isOnScreen = point >= 0 && point <= size;
    if (!isOnScreen)
        return pixel;
    // A fractional scale makes the size in points a rounded one; the last pixel is the last whole one.
    return std::min(pixel, toWireCoordinate(origin + std::max(std::floor(size * scale), 1.0) - 1));
}

} // namespace

RootPixel toRootPixel(Point point, const ScreenMapping& mapping)
{
    return {toRootCoordinate(point.x, mapping.originX, mapping.size.width, mapping.scale),
        toRootCoordinate(point.y, mapping.originY, mapping.size.height, mapping.scale)};
}

RootPixel clampedTo(RootPixel pixel, int width, int height)
{
    return {std::clamp(pixel.x, 0, std::max(width, 1) - 1), std::clamp(pixel.y, 0, std::max(height, 1) - 1)};
}

} // namespace companion
