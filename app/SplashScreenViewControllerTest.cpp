#include "app/SplashScreenViewController.h"
#include "platform/testing/FakeMainQueue.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

TEST(SplashScreenViewControllerTest, DashboardComesTwoSecondsAfterTheSplashScreenAndOnce)
{
    FakeMainQueue queue;
    int shown = 0;
    const auto splash = std::make_shared<SplashScreenViewController>(queue, [&] { ++shown; });
    splash->viewDidLoad();

    queue.advance(1999ms);
    EXPECT_EQ(shown, 0);
    queue.advance(1ms);
    EXPECT_EQ(shown, 1);
    queue.advance(60s);
    EXPECT_EQ(shown, 1);
}

TEST(SplashScreenViewControllerTest, ControllerLivesUntilItHasHandedOver)
{
    FakeMainQueue queue;
    auto splash = std::make_shared<SplashScreenViewController>(queue, [] {});
    splash->viewDidLoad();
    const std::weak_ptr weak = splash;
    splash.reset();

    queue.advance(1s);
    EXPECT_FALSE(weak.expired());
    queue.advance(1s);
    EXPECT_TRUE(weak.expired());
}

} // namespace companion::testing
