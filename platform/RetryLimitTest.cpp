#include "platform/RetryLimit.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

TEST(RetryLimitTest, ASecondTryIsDueASecondAfterTheFirst)
{
    RetryLimit limit;
    const RetryLimit::TimePoint firstTry{71h};
    EXPECT_TRUE(limit.isDue(firstTry));
    EXPECT_FALSE(limit.isDue(firstTry + 999ms));
    EXPECT_TRUE(limit.isDue(firstTry + 1000ms));
    EXPECT_FALSE(limit.isDue(firstTry + 1999ms));
}

} // namespace companion::testing
