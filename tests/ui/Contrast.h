#pragma once

#include <algorithm>
#include <cmath>

#include <QColor>

namespace companion::testing {

/// Relative luminance as WCAG 2.1 defines it, from 0 to 1.
inline double luminance(const QColor& color)
{
    const auto linear = [](double channel) {
        return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

/// As WCAG 2.1 defines it, from 1 to 21.
inline double contrast(const QColor& one, const QColor& other)
{
    // A list: of two temporaries it would give references that dangle.
    const auto [dark, light] = std::minmax({luminance(one), luminance(other)});
    return (light + 0.05) / (dark + 0.05);
}

} // namespace companion::testing
