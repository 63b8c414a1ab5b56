#pragma once

#include "platform/Geometry.h"

#include <cstdint>

namespace companion {

/// A position on an output together with the output's size, both in 256ths of a point, as fine as programs are told it.
struct OutputPosition {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 1;
    std::uint32_t height = 1;

    bool operator==(const OutputPosition&) const = default;
};

/// `at` is in points of an output of that many points. What lies off it comes to its edge.
OutputPosition toOutputPosition(Point at, Size area);

} // namespace companion
