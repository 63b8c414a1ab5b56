#pragma once

namespace companion {

/// A position in points of the main screen's space: origin at its top-left corner, y downwards.
struct Point {
    double x = 0;
    double y = 0;

    bool operator==(const Point&) const = default;
};

/// Width and height, in points.
struct Size {
    double width = 0;
    double height = 0;

    bool operator==(const Size&) const = default;
};

/// A rectangle that spans `size` from `origin`.
struct Rect {
    Point origin;
    Size size;

    bool operator==(const Rect&) const = default;
};

} // namespace companion
