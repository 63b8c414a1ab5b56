#include "platform/wayland/OutputPosition.h"

#include <algorithm>
#include <cmath>

namespace companion {

namespace {

constexpr double mostPoints = 65535; // more than any output has
constexpr double partsOfAPoint = 256;

// Written so that NaN, which is neither above nor below, becomes 0.
std::uint32_t toParts(double points, double most)
{
    if (!(points > 0))
        return 0;
    return static_cast<std::uint32_t>(std::lround(std::min(points, most) * partsOfAPoint));
}

} // namespace

OutputPosition toOutputPosition(Point at, Size area)
{
    return {toParts(at.x, std::min(area.width, mostPoints)), toParts(at.y, std::min(area.height, mostPoints)),
        std::max(toParts(area.width, mostPoints), 1U), std::max(toParts(area.height, mostPoints), 1U)};
}

} // namespace companion
