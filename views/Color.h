#pragma once

namespace companion {

/// A colour by its components, each from 0 to 1.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;

    bool operator==(const Color&) const = default;
};

inline constexpr Color white{1, 1, 1, 1};
inline constexpr Color clear{0, 0, 0, 0};

} // namespace companion
