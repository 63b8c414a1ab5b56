#include "platform/RetryLimit.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

TEST(RetryLimitTest, ASecondTryIsDueASecondAfterTheFirst)
{
    RetryLimit limit;
    const RetryLimit::TimePoint start{71h};
    EXPECT_TRUE(limit.isDue(start));
    EXPECT_FALSE(limit.isDue(start + 999ms));
    EXPECT_TRUE(limit.isDue(start + 1000ms));
    EXPECT_FALSE(limit.isDue(start + 1999ms));
}

} // namespace companion::testing
