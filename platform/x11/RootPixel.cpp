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

// `size` points are exactly `pixels` pixels: the scale is what they were counted by before they were rounded.
int toRootCoordinate(double point, double size, int origin, int pixels)
{
    const bool isOnScreen = point >= 0 && point <= size;
    const int pixel = toWireCoordinate(origin + (size > 0 ? point * (pixels / size) : point));
    return isOnScreen ? std::min(pixel, origin + pixels - 1) : pixel;
}

// As many points as there are pixels in a monitor's width or height, but for the rounding.
bool isSize(double points, double scale, int pixels)
{
    return std::abs(points * scale - pixels) < scale;
}

int wholePixels(double points, double scale)
{
    return std::max(static_cast<int>(std::floor(points * scale)), 1);
}

} // namespace

RootArea areaOf(const ScreenMapping& mapping, const std::vector<RootArea>& monitors)
{
    const auto& [x, y, scale, size] = mapping;
    for (const RootArea& monitor : monitors) {
        if (monitor.x == x && monitor.y == y && isSize(size.width, scale, monitor.width)
            && isSize(size.height, scale, monitor.height))
            return monitor;
    }
    return {static_cast<int>(x), static_cast<int>(y), wholePixels(size.width, scale),
        wholePixels(size.height, scale)};
}

RootPixel toRootPixel(Point point, const ScreenMapping& mapping, const RootArea& area)
{
    return {toRootCoordinate(point.x, mapping.size.width, area.x, area.width),
        toRootCoordinate(point.y, mapping.size.height, area.y, area.height)};
}

RootPixel clampedTo(RootPixel pixel, int width, int height)
{
    return {std::clamp(pixel.x, 0, std::max(width, 1) - 1), std::clamp(pixel.y, 0, std::max(height, 1) - 1)};
}

} // namespace companion
