#pragma once

namespace companion {

/// How an animation runs: a cubic Bézier curve from (0, 0) to (1, 1) through two control points, time across and
/// progress up.
struct TimingFunction {
    double x1 = 0;
    double y1 = 0;
    double x2 = 1;
    double y2 = 1;

    /// Progress at `time`, which is 0 at the start and 1 at the end; it may lie beyond 1 in between.
    double progressAt(double time) const;

    bool operator==(const TimingFunction&) const = default;
};

} // namespace companion
