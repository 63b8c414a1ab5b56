#include "views/TimingFunction.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace companion::testing {

TEST(TimingFunction, StartsAt0AndEndsAt1)
{
    const TimingFunction timing{0.25, 1.5, 0.5, 1};
    EXPECT_EQ(timing.progressAt(0), 0);
    EXPECT_EQ(timing.progressAt(1), 1);
    EXPECT_EQ(timing.progressAt(-0.1), 0);
    EXPECT_EQ(timing.progressAt(1.1), 1);
}

TEST(TimingFunction, ControlPointsOnTheDiagonalRunEvenly)
{
    const TimingFunction timing{1 / 3.0, 1 / 3.0, 2 / 3.0, 2 / 3.0};
    for (const double time : {0.013, 0.25, 0.5, 0.77, 0.999})
        EXPECT_NEAR(timing.progressAt(time), time, 1e-9);
}

// At the curve's own parameter 0.5: x = 0.375 (0.25 + 0.5) + 0.125, y = 0.375 (1.5 + 1) + 0.125.
TEST(TimingFunction, AKnownPointOfTheOvershootingCurveIsMet)
{
    EXPECT_NEAR((TimingFunction{0.25, 1.5, 0.5, 1}.progressAt(0.40625)), 1.0625, 1e-9);
}

TEST(TimingFunction, ItOvershootsBy8PercentAndSettles)
{
    const TimingFunction timing{0.25, 1.5, 0.5, 1};
    double highest = 0;
    for (double time = 0; time <= 1; time += 0.001)
        highest = std::max(highest, timing.progressAt(time));
    EXPECT_NEAR(highest, 1.08, 1e-5);
    EXPECT_NEAR(timing.progressAt(0.999), 1, 0.001);
}

} // namespace companion::testing
