#include "platform/posix/SystemClock.h"

#include <ctime>

#include <gtest/gtest.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;

TEST(SystemClockTest, TellsTheSecondsSince1970WithTheirFraction)
{
    const double before = static_cast<double>(std::time(nullptr)) - 1; // time(2) may lag by a tick
    const double first = SystemClock().secondsSince1970();
    double second = first;
    while (second == first)
        second = SystemClock().secondsSince1970();
    EXPECT_GE(first, before);
    EXPECT_LE(first, static_cast<double>(std::time(nullptr)) + 1);
    EXPECT_NE(second - first, 1.0);
}

TEST(ThreadPauseTest, APauseOf1000MicrosecondsTakesAtLeastSoLong)
{
    const auto start = std::chrono::steady_clock::now();
    ThreadPause().pauseFor(1000us);
    EXPECT_GE(std::chrono::steady_clock::now() - start, 1000us);
}

} // namespace
} // namespace companion::testing
