#include "dashboard/RelaySettingsViewController.h"

#include <gmock/gmock.h>

namespace companion::testing {

using ::testing::ElementsAre;

TEST(RelaySettingsViewController, OffersFourFrameRatesAndTwoResolutionsTheFirstOfWhichIsChosen)
{
    RelaySettingsViewController settings;
    settings.viewDidLoad();
    EXPECT_THAT(settings.fpsButton().titles, ElementsAre("15", "25", "30", "60"));
    EXPECT_EQ(settings.fpsButton().selectedIndex, 0u);
    EXPECT_THAT(settings.sessionPresentButton().titles, ElementsAre("1080P", "720P"));
    EXPECT_EQ(settings.sessionPresentButton().selectedIndex, 0u);
}

TEST(RelaySettingsViewController, LoadingDiscardsItemsFromBeforeAndTheChoiceAmongThem)
{
    RelaySettingsViewController settings;
    settings.fpsButton() = {{"Item 1", "Item 2"}, 1};
    settings.sessionPresentButton() = {{"Item 1"}, 0};
    settings.viewDidLoad();
    EXPECT_EQ(settings.fpsButton().titles.size(), 4u);
    EXPECT_EQ(settings.fpsButton().selectedIndex, 0u);
    EXPECT_EQ(settings.sessionPresentButton().titles.size(), 2u);
}

} // namespace companion::testing
