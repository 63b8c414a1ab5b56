#include "tests/ui/ScreenTest.h"
#include "ui/ColoredView.h"
#include "ui/QtSettingsView.h"
#include "ui/Theme.h"

#include <QComboBox>
#include <QLabel>

namespace companion::testing {
namespace {

class SettingsScreenTest : public ScreenTest {
protected:
    void open()
    {
        click(outlet("settingsIcon"));
        QCoreApplication::processEvents();
    }

    template <typename View = QWidget> View& setting(const char* name) { return find<View>(m_window, name); }

    std::vector<std::string> items(const char* popUp)
    {
        std::vector<std::string> items;
        auto& button = setting<QComboBox>(popUp);
        for (int i = 0; i < button.count(); ++i)
            items.push_back(button.itemText(i).toStdString());
        return items;
    }
};

TEST_F(SettingsScreenTest, PopUpsHaveTheirItemsAndTheFirstOneIsChosen)
{
    open();
    EXPECT_THAT(items("fpsButton"), ::testing::ElementsAre("15", "25", "30", "60"));
    EXPECT_THAT(items("sessionPresentButton"), ::testing::ElementsAre("1080P", "720P"));
    EXPECT_EQ(setting<QComboBox>("fpsButton").currentText(), "15");
    EXPECT_EQ(setting<QComboBox>("sessionPresentButton").currentText(), "1080P");
    EXPECT_FALSE(items("switchDeviceButton").empty());
    EXPECT_FALSE(items("switchAudioDeviceButton").empty());
}

TEST_F(SettingsScreenTest, ItemsOfTheSceneAreReplacedForFrameRateAndResolutionOnly)
{
    RelaySettingsViewController controller;
    controller.viewDidLoad();
    QtSettingsView view;
    for (const char* name : {"fpsButton", "sessionPresentButton", "switchDeviceButton"})
        find<QComboBox>(view, name).addItem("of the scene");
    view.showItems(controller);
    EXPECT_EQ(find<QComboBox>(view, "fpsButton").count(), 4);
    EXPECT_EQ(find<QComboBox>(view, "fpsButton").findText("of the scene"), -1);
    EXPECT_EQ(find<QComboBox>(view, "sessionPresentButton").count(), 2);
    EXPECT_EQ(find<QComboBox>(view, "switchDeviceButton").findText("of the scene"), 1);
}

TEST_F(SettingsScreenTest, TheBackgroundIsWhite)
{
    open();
    EXPECT_EQ(setting<ColoredView>("settingsView").backgroundColor(), QColor(255, 255, 255));
}

TEST_F(SettingsScreenTest, TheHeadingIsAsLargeAsThatOfTheList)
{
    open();
    const auto& heading = setting<QLabel>("settingsHeaderLabel");
    EXPECT_EQ(heading.text(), "Settings");
    EXPECT_EQ(heading.font().pixelSize(), find<QLabel>(list(), "headerMainLabel").font().pixelSize());
    EXPECT_EQ(heading.font().weight(), QFont::Medium);
    EXPECT_EQ(setting("settingsView").width(), list().width());
}

TEST_F(SettingsScreenTest, PopUpsAreWhiteWithAThinOutlineAndHighEnoughToHit)
{
    open();
    for (const char* name : {"sessionPresentButton", "switchDeviceButton", "switchAudioDeviceButton"}) {
        auto& button = setting<QComboBox>(name);
        EXPECT_GE(button.height(), 36) << name;
        const QPoint topMiddle(button.width() / 2, 0);
        EXPECT_EQ(pixel(button, topMiddle), QColor(Theme::outline)) << name;
        for (int y = 1; y < 6; ++y) // no gradient
            EXPECT_EQ(pixel(button, topMiddle + QPoint(0, y)), QColor(Qt::white)) << name;
    }
}

TEST_F(SettingsScreenTest, AChoiceOutlivesTheClosingOfThePopoverAndReachesNobody)
{
    open();
    taken();
    setting<QComboBox>("fpsButton").setCurrentText("30");
    setting<QComboBox>("sessionPresentButton").setCurrentText("720P");
    open(); // closes it
    EXPECT_FALSE(setting("settingsView").isVisible());
    open();
    EXPECT_TRUE(setting("settingsView").isVisible());
    EXPECT_EQ(setting<QComboBox>("fpsButton").currentText(), "30");
    EXPECT_EQ(setting<QComboBox>("sessionPresentButton").currentText(), "720P");
    EXPECT_EQ(taken(), "");
    EXPECT_EQ(m_dashboard.httpSession.sent().size(), 0U);
}

TEST_F(SettingsScreenTest, PopUpsAreEquallyWideAndStandBesideTheirLabels)
{
    open();
    for (const char* name : {"sessionPresent", "switchDevice", "switchAudioDevice"}) {
        auto& button = setting<QComboBox>((std::string(name) + "Button").c_str());
        auto& label = setting<QLabel>((std::string(name) + "Label").c_str());
        EXPECT_EQ(button.width(), setting("fpsButton").width()) << name;
        EXPECT_NEAR(button.geometry().center().y(), label.geometry().center().y(), 2) << name;
        EXPECT_EQ(label.buddy(), &button);
    }
}

TEST_F(SettingsScreenTest, TabGoesThroughThePopUpsFromTopToBottom)
{
    open();
    EXPECT_THAT(tabOrder(4),
        ::testing::ElementsAre(
            "fpsButton", "sessionPresentButton", "switchDeviceButton", "switchAudioDeviceButton"));
}

} // namespace
} // namespace companion::testing
