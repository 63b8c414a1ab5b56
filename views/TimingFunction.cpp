#include "views/TimingFunction.h"

namespace companion {

namespace {

/// One coordinate of a Bézier curve that starts at 0, ends at 1 and has the control values `a` and `b`.
double bezier(double a, double b, double t)
{
    const double u = 1 - t;
    return 3 * u * u * t * a + 3 * u * t * t * b + t * t * t;
}

} // namespace

double TimingFunction::progressAt(double time) const
{
    if (time <= 0)
        return 0;
    if (time >= 1)
        return 1;

    // x rises all along, as control points lie between 0 and 1: halving 40 times is as exact as it shows.
    double low = 0;
    double high = 1;
    for (int step = 0; step < 40; ++step) {
        const double middle = (low + high) / 2;
        (bezier(x1, x2, middle) < time ? low : high) = middle;
    }
    return bezier(y1, y2, (low + high) / 2);
}

} // namespace companion
