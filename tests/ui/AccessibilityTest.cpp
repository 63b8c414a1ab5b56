#include "tests/ui/ScreenTest.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QComboBox>
#include <QDialog>
#include <QLabel>

namespace companion::testing {
namespace {

class AccessibilityTest : public ScreenTest {
protected:
    AccessibilityTest()
    {
        openListOfThree();
        clickRow(0);
        click(outlet("settingsIcon"));
        click(outlet("settingsIcon"));
    }

    QAccessibleInterface& heard(const char* name)
    {
        return *QAccessible::queryAccessibleInterface(&find(m_window, name));
    }

    void expect(const char* outlet, QAccessible::Role role, const char* name)
    {
        EXPECT_EQ(heard(outlet).role(), role) << outlet;
        EXPECT_EQ(heard(outlet).text(QAccessible::Name), name) << outlet;
    }

    bool sees(const char* outlet, const QString& action)
    {
        return heard(outlet).actionInterface()->actionNames().contains(action);
    }
};

TEST_F(AccessibilityTest, EveryControlHasItsRoleAndItsName)
{
    expect("devicesListIcon", QAccessible::Button, "Devices");
    expect("settingsIcon", QAccessible::Button, "Settings");
    expect("connectButton", QAccessible::Button, "Connect");
    expect("castButtonView", QAccessible::Button, "Cast");
    expect("wirelessTouchSwitch", QAccessible::CheckBox, "Wireless touch");
    expect("fileUploadButton", QAccessible::Button, "Upload a file");
    expect("fileUploadView", QAccessible::Grouping, "File upload");
    expect("deviceStatusLabel", QAccessible::StaticText, "Paired to 0A00020F");
    expect("devicesTableView", QAccessible::List, "Panels");
    expect("disconnectButton", QAccessible::Button, "Disconnect");
    expect("fpsButton", QAccessible::ComboBox, "Frame rate");
    expect("sessionPresentButton", QAccessible::ComboBox, "Resolution");
    expect("switchDeviceButton", QAccessible::ComboBox, "Video device");
    expect("switchAudioDeviceButton", QAccessible::ComboBox, "Audio device");
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&m_window)->role(), QAccessible::Window);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&m_window)->text(QAccessible::Name), "Panel Companion");
}

TEST_F(AccessibilityTest, ARowReadsAsThePanelsNameAndItsAddress)
{
    EXPECT_EQ(heard("devicesTableView").child(1)->text(QAccessible::Name), "Hall, 0A000210");
}

TEST_F(AccessibilityTest, TheCastButtonsStateSaysWhetherCastingRuns)
{
    EXPECT_FALSE(heard("castButtonView").state().pressed);
    click(outlet("castButtonView"));
    EXPECT_TRUE(heard("castButtonView").state().pressed);
    click(outlet("castButtonView"));
    EXPECT_FALSE(heard("castButtonView").state().pressed);
}

TEST_F(AccessibilityTest, TheCastButtonCanBePressed)
{
    EXPECT_TRUE(sees("castButtonView", QAccessibleActionInterface::pressAction()));
    heard("castButtonView").actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_FALSE(m_dashboard.controller->isCastingInProgress()); // an alert must not hold the caller up
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_dashboard.controller->isCastingInProgress());
}

TEST_F(AccessibilityTest, UnderAnAlertNothingCanBePressed)
{
    QDialog alert;
    alert.setModal(true);
    alert.show();
    ASSERT_EQ(QApplication::activeModalWidget(), &alert);
    int clicks = 0;
    for (const char* name : {"castButtonView", "fileUploadButton", "devicesListIcon", "settingsIcon",
             "connectButton", "disconnectButton", "wirelessTouchSwitch"}) {
        if (const auto* button = qobject_cast<QAbstractButton*>(&find(m_window, name)))
            QObject::connect(button, &QAbstractButton::clicked, &alert, [&clicks] { ++clicks; });
        heard(name).actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    }
    m_dashboard.transcript.clear();
    QTest::qWait(300); // the toolkit takes its time to show that a button is pressed
    EXPECT_EQ(m_dashboard.transcript.take(), "");
    EXPECT_GT(clicks, 0) << "no press reaches the window anyway";
    EXPECT_FALSE(m_dashboard.controller->isCastingInProgress());
    EXPECT_FALSE(m_dashboard.view->wirelessTouchSwitch().checked());
}

TEST_F(AccessibilityTest, TheSwitchTellsItsStateAndItsValue)
{
    EXPECT_TRUE(heard("wirelessTouchSwitch").state().checkable);
    EXPECT_FALSE(heard("wirelessTouchSwitch").state().checked);
    EXPECT_EQ(heard("wirelessTouchSwitch").valueInterface()->currentValue(), 0);
    m_dashboard.view->wirelessTouchSwitch().setChecked(true);
    EXPECT_TRUE(heard("wirelessTouchSwitch").state().checked);
    EXPECT_EQ(heard("wirelessTouchSwitch").valueInterface()->currentValue(), 1);
    EXPECT_EQ(heard("wirelessTouchSwitch").childCount(), 0);
}

TEST_F(AccessibilityTest, TheSwitchCanBePressedAndItsValueSet)
{
    int actions = 0;
    m_dashboard.view->wirelessTouchSwitch().setAction([&actions](ITSwitch&) { ++actions; });
    EXPECT_TRUE(sees("wirelessTouchSwitch", QAccessibleActionInterface::pressAction()));
    heard("wirelessTouchSwitch").actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(m_dashboard.view->wirelessTouchSwitch().checked());
    EXPECT_EQ(actions, 1);
    heard("wirelessTouchSwitch").valueInterface()->setCurrentValue(1);
    EXPECT_EQ(actions, 1);
    heard("wirelessTouchSwitch").valueInterface()->setCurrentValue(0);
    EXPECT_FALSE(m_dashboard.view->wirelessTouchSwitch().checked());
    EXPECT_EQ(actions, 2);
}

TEST_F(AccessibilityTest, ADisabledSwitchSaysSo)
{
    outlet("wirelessTouchSwitch").setEnabled(false);
    EXPECT_TRUE(heard("wirelessTouchSwitch").state().disabled);
}

} // namespace
} // namespace companion::testing
