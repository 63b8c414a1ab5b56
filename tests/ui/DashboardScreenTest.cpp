#include "tests/ui/Contrast.h"
#include "tests/ui/ScreenTest.h"
#include "ui/ColoredView.h"
#include "ui/ImageView.h"
#include "ui/MaskingViewWidget.h"
#include "ui/Popover.h"
#include "ui/RoundButton.h"
#include "ui/Theme.h"

#include <QAccessible>
#include <QFocusFrame>
#include <QFontInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>

namespace companion::testing {
namespace {

class DashboardScreenTest : public ScreenTest {
protected:
    void expectFont(const char* label, QFont::Weight weight, int points)
    {
        const QFont font = outlet<QLabel>(label).font();
        EXPECT_EQ(font.weight(), weight) << label;
        EXPECT_EQ(font.pixelSize(), points) << label;
        EXPECT_EQ(font.family(), Theme::font(Theme::FontFace::regular, points).family()) << label;
    }

    /// What changes with the focus stands out from what was there by 3 to 1, as WCAG 2.2 has it, and has some size.
    static void expectVisibleFocus(QWidget& control)
    {
        control.window()->activateWindow();
        QCoreApplication::processEvents();
        control.clearFocus();
        const QRect place(control.mapTo(control.window(), QPoint()), control.size());
        const QImage without = control.window()->grab(place).toImage();
        reachByKeyboard(control);
        const QImage with = control.window()->grab(place).toImage();
        int changed = 0;
        for (int y = 0; y < with.height(); ++y) {
            for (int x = 0; x < with.width(); ++x)
                changed += contrast(with.pixelColor(x, y), without.pixelColor(x, y)) >= 3;
        }
        EXPECT_GE(changed, 2 * (control.width() + control.height())) << control.objectName().toStdString();
        control.clearFocus();
    }

    std::vector<Popover*> openPopovers()
    {
        std::vector<Popover*> open;
        for (auto* popover : m_dashboard.view->findChildren<Popover*>()) {
            if (popover->isVisible())
                open.push_back(popover);
        }
        return open;
    }

    int rings() const
    {
        int count = 0;
        for (const QWidget* widget : QApplication::allWidgets())
            count += qobject_cast<const QFocusFrame*>(widget) && widget->isVisible();
        return count;
    }
};

TEST_F(DashboardScreenTest, EveryOutletIsThereByItsName)
{
    for (const char* name : {"dashboardParentView", "fileUploadView", "castButtonView", "wirelessTouchSwitch",
             "wirelessTouchStatusLabel", "toolbarView", "devicesListIcon", "settingsIcon",
             "deviceStatusLabel", "fileUploadButton", "uploadArrowImage", "maskView", "hdmiToggleView",
             "emptyStateImageView", "hdmiMessageView", "facingProblemLabel", "enableHDMILabel",
             "deviceHDMIMainLabel", "deviceHDMISubLabel", "dragAndDropLabel", "emptyStateLabel"})
        EXPECT_EQ(outlet(name).objectName(), name);
}

TEST_F(DashboardScreenTest, AtStartFourPanesAndTheMaskAreHiddenAndTheEmptyStateIsShown)
{
    for (const char* name : {"hdmiToggleView", "fileUploadView", "castButtonView", "hdmiMessageView",
             "maskView", "castCaptionLabel", "uploadProgressBars"})
        EXPECT_FALSE(outlet(name).isVisible()) << name;
    for (const char* name : {"toolbarView", "emptyStateImageView", "emptyStateLabel", "connectButton"})
        EXPECT_TRUE(outlet(name).isVisible()) << name;
    EXPECT_FALSE(m_dashboard.view->wirelessTouchSwitch().checked());
}

TEST_F(DashboardScreenTest, TheBackgroundIsWhite)
{
    EXPECT_EQ(outlet<ColoredView>("dashboardParentView").backgroundColor(), QColor(255, 255, 255));
    EXPECT_EQ(pixel(*m_dashboard.view, {5, 300}), QColor(255, 255, 255));
}

TEST_F(DashboardScreenTest, TheToolbarIs52And73And94WithAnAlphaOfAQuarter)
{
    const QColor color = outlet<ColoredView>("toolbarView").backgroundColor();
    EXPECT_EQ(color.rgb(), qRgb(52, 73, 94));
    EXPECT_NEAR(color.alphaF(), 0.25, 0.5 / 255);
    EXPECT_EQ(pixel(*m_dashboard.view, {5, 5}), QColor(204, 209, 215)); // a quarter of it over white
}

TEST_F(DashboardScreenTest, TheHdmiPaneIs34WithAnAlphaOfAQuarter)
{
    const QColor color = outlet<ColoredView>("hdmiToggleView").backgroundColor();
    EXPECT_EQ(color.rgb(), qRgb(34, 34, 34));
    EXPECT_NEAR(color.alphaF(), 0.25, 0.5 / 255);
    m_dashboard.view->setHidden(Pane::hdmiToggle, false);
    EXPECT_EQ(pixel(*m_dashboard.view, {5, m_dashboard.view->height() - 5}), QColor(200, 200, 200));
}

TEST_F(DashboardScreenTest, LabelsHaveTheirFonts)
{
    for (const char* label : {"dragAndDropLabel", "emptyStateLabel"})
        expectFont(label, QFont::Normal, 12);
    for (const char* label :
        {"deviceStatusLabel", "facingProblemLabel", "enableHDMILabel", "deviceHDMISubLabel"})
        expectFont(label, QFont::Normal, 16);
    expectFont("deviceHDMIMainLabel", QFont::DemiBold, 32);
}

TEST_F(DashboardScreenTest, TheTypefaceIsTheEmbeddedOneInItsOwnWeights)
{
    if (!QFile::exists(":/fonts/Poppins-Regular.ttf"))
        GTEST_SKIP() << "Poppins is not embedded in this build";
    using Theme::FontFace;
    for (const auto& [face, weight] : {std::pair{FontFace::regular, 400}, {FontFace::medium, 500},
             {FontFace::semiBold, 600}, {FontFace::extraLight, 200}}) {
        const QFontInfo shown(Theme::font(face, 20));
        EXPECT_TRUE(shown.family().startsWith("Poppins")) << shown.family().toStdString();
        EXPECT_EQ(shown.weight(), weight);
        EXPECT_EQ(shown.pixelSize(), 20);
    }
}

TEST_F(DashboardScreenTest, ImagesAreShownByTheirNames)
{
    EXPECT_EQ(outlet<RoundButton>("castButtonView").imageName(), "castingInactive");
    EXPECT_EQ(outlet<ImageView>("fileUploadView").imageName(), "fileUploadGrid");
    EXPECT_EQ(outlet<ImageView>("uploadArrowImage").imageName(), "uploadArrow");
}

TEST_F(DashboardScreenTest, TheCastButtonIsRoundAtAnyWidth)
{
    RoundButton button;
    button.resize(80, 80);
    button.makeRound();
    EXPECT_EQ(button.cornerRadius(), 40);

    auto& castButton = outlet<RoundButton>("castButtonView");
    EXPECT_EQ(castButton.cornerRadius(), castButton.width() / 2.0);
}

TEST_F(DashboardScreenTest, OnlyTheCircleOfTheCastButtonTakesClicks)
{
    pair();
    auto& button = outlet<RoundButton>("castButtonView");
    int clicks = 0;
    QObject::connect(&button, &RoundButton::clicked, [&clicks] { ++clicks; });
    QTest::mouseClick(&button, Qt::LeftButton, {}, {6, 6});
    EXPECT_EQ(clicks, 0);
    QTest::mouseClick(&button, Qt::LeftButton, {}, {64, 6});
    EXPECT_EQ(clicks, 1);
}

TEST_F(DashboardScreenTest, CastingShowsTheOtherImageAndTheOtherCaption)
{
    pair();
    click(outlet("castButtonView"));
    EXPECT_EQ(outlet<RoundButton>("castButtonView").imageName(), "castingActive");
    EXPECT_EQ(outlet<QLabel>("castCaptionLabel").text(), "Stop casting");
    click(outlet("castButtonView"));
    EXPECT_EQ(outlet<RoundButton>("castButtonView").imageName(), "castingInactive");
    EXPECT_EQ(outlet<QLabel>("castCaptionLabel").text(), "Start casting");
}

TEST_F(DashboardScreenTest, APairedPanelReplacesTheEmptyState)
{
    pair();
    EXPECT_EQ(outlet<QLabel>("deviceStatusLabel").text(), "Paired to 0A00020F");
    for (const char* name : {"hdmiToggleView", "fileUploadView", "castButtonView", "castCaptionLabel"})
        EXPECT_TRUE(outlet(name).isVisible()) << name;
    for (const char* name : {"emptyStateImageView", "connectButton", "hdmiMessageView"})
        EXPECT_FALSE(outlet(name).isVisible()) << name;
}

TEST_F(DashboardScreenTest, TheListOpensBelowItsIconWithTheArrowAtTheMiddleOfTheIconsBottomEdge)
{
    openList();
    ASSERT_EQ(openPopovers().size(), 1U);
    auto& icon = outlet("devicesListIcon");
    EXPECT_EQ(openPopovers().front()->arrowTip(), icon.mapToGlobal(QPoint(icon.width() / 2, icon.height())));
}

TEST_F(DashboardScreenTest, TheSettingsOpenBelowTheirIcon)
{
    click(outlet("settingsIcon"));
    ASSERT_EQ(openPopovers().size(), 1U);
    auto& icon = outlet("settingsIcon");
    EXPECT_EQ(openPopovers().front()->arrowTip(), icon.mapToGlobal(QPoint(icon.width() / 2, icon.height())));
    EXPECT_LE(find(m_window, "settingsView").mapTo(&m_window, QPoint(360, 0)).x(), m_window.width() - 8);
}

TEST_F(DashboardScreenTest, ThePopoverHasASmoothOutlineAndAShadowThatFadesOut)
{
    openList();
    ASSERT_EQ(openPopovers().size(), 1U);
    Popover& popover = *openPopovers().front();
    const QRect body = QRect(list().mapTo(&m_window, QPoint()), list().size()).adjusted(0, -12, 0, 12);
    const QImage image = m_window.grab().toImage();
    const auto lightness = [&](QPoint at) {
        return image.pixelColor(at * image.devicePixelRatio()).lightness();
    };
    const QPoint edge(body.left() + 40, body.bottom());
    EXPECT_EQ(lightness(edge - QPoint(0, 2)), 255);
    EXPECT_LT(lightness(edge + QPoint(0, 4)), 250); // nothing but the white dashboard lies there
    for (int y = 4; y < 24; ++y)
        EXPECT_LE(lightness(edge + QPoint(0, y)), lightness(edge + QPoint(0, y + 1))) << y;
    EXPECT_EQ(lightness(edge + QPoint(0, 26)), 255);

    const QPoint tip = m_window.mapFromGlobal(popover.arrowTip());
    EXPECT_EQ(lightness(tip + QPoint(0, 6)), 255);
    EXPECT_EQ(lightness(tip + QPoint(0, 11)), 255); // no line between the arrow and the body
    EXPECT_LT(lightness(tip + QPoint(12, 4)), 230); // the toolbar, beside the arrow
}

TEST_F(DashboardScreenTest, APopoverIsNoWindowOfItsOwn)
{
    const auto before = QApplication::topLevelWidgets().size();
    openList();
    click(outlet("settingsIcon"));
    EXPECT_EQ(QApplication::topLevelWidgets().size(), before + 4); // the lists of the four pop-up buttons
    for (const QWidget* window : QApplication::topLevelWidgets())
        EXPECT_TRUE(window == &m_window || !window->isVisible());
}

TEST_F(DashboardScreenTest, ScreenReadersFindThePopoversAsDialogsNamedByTheirHeadings)
{
    openList();
    const QAccessibleInterface* const opened = QAccessible::queryAccessibleInterface(openPopovers().front());
    EXPECT_EQ(opened->role(), QAccessible::Dialog);
    EXPECT_EQ(opened->text(QAccessible::Name), outlet<QLabel>("headerMainLabel").text());
    click(outlet("settingsIcon"));
    ASSERT_EQ(openPopovers().size(), 1U);
    const QAccessibleInterface* const other = QAccessible::queryAccessibleInterface(openPopovers().front());
    EXPECT_EQ(other->role(), QAccessible::Dialog);
    EXPECT_EQ(other->text(QAccessible::Name), "Settings");
}

TEST_F(DashboardScreenTest, TheConnectButtonOpensTheListToo)
{
    click(outlet("connectButton"));
    EXPECT_EQ(openPopovers().size(), 1U);
    EXPECT_TRUE(table().isVisible());
}

TEST_F(DashboardScreenTest, OpeningTheListTwiceKeepsItsRowsItsPickAndItsOneSearch)
{
    openListOfThree();
    clickRow(1);
    click(outlet("devicesListIcon"));
    EXPECT_TRUE(openPopovers().empty());
    openList();
    ASSERT_EQ(openPopovers().size(), 1U);
    EXPECT_EQ(icons(), "radioIcon connectedChain radioIcon");
    const std::string told = taken();
    EXPECT_EQ(told.find("browse"), told.rfind("browse"));
}

TEST_F(DashboardScreenTest, APressAnywhereInTheWindowClosesThePopover)
{
    openList();
    QTest::mousePress(&outlet("toolbarView"), Qt::LeftButton, {}, {300, 30});
    EXPECT_TRUE(openPopovers().empty());
}

TEST_F(DashboardScreenTest, AKeyInTheWindowClosesThePopover)
{
    openList();
    QTest::keyClick(&outlet("settingsIcon"), Qt::Key_Tab);
    EXPECT_TRUE(openPopovers().empty());
}

TEST_F(DashboardScreenTest, EscapeClosesThePopover)
{
    openList();
    QTest::keyClick(&table(), Qt::Key_Escape);
    EXPECT_TRUE(openPopovers().empty());
}

TEST_F(DashboardScreenTest, APressOnTheLowerEdgesShadowClosesThePopoverAndOneInsideDoesNot)
{
    openList();
    Popover& popover = *openPopovers().front();
    QTest::mouseClick(&outlet("headerMainLabel"), Qt::LeftButton);
    QTest::keyClick(&table(), Qt::Key_F9);
    EXPECT_EQ(openPopovers().size(), 1U);
    QTest::mouseClick(&popover, Qt::LeftButton, {}, {popover.width() / 2, popover.height() - 4});
    EXPECT_TRUE(openPopovers().empty());
}

TEST_F(DashboardScreenTest, TheKeyboardGoesBackToWhereItWasWhenThePopoverCloses)
{
    outlet("connectButton").setFocus(Qt::TabFocusReason);
    QTest::keyClick(&focused(), Qt::Key_Space);
    EXPECT_EQ(&focused(), &table());
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_EQ(&focused(), &outlet("connectButton"));
}

TEST_F(DashboardScreenTest, TheKeyboardGoesToTheIconWhenWhatItCameFromHasGone)
{
    outlet("connectButton").setFocus(Qt::TabFocusReason);
    QTest::keyClick(&focused(), Qt::Key_Space);
    announce("Meridian 65|Room 204|0A00020F");
    QTest::keyClick(&focused(), Qt::Key_Down);
    QTest::keyClick(&focused(), Qt::Key_Return);
    QTest::keyClick(&focused(), Qt::Key_Escape);
    EXPECT_EQ(&focused(), &outlet("devicesListIcon"));
}

TEST_F(DashboardScreenTest, APressOnAnotherControlClosesThePopoverAndWorksThatControl)
{
    pair();
    openList();
    click(outlet("castButtonView"));
    EXPECT_TRUE(openPopovers().empty());
    EXPECT_TRUE(m_dashboard.controller->isCastingInProgress());
}

TEST_F(DashboardScreenTest, ThePopoverStaysWhenTheProgramIsLeft)
{
    openList();
    QEvent left(QEvent::WindowDeactivate);
    QCoreApplication::sendEvent(&m_window, &left);
    QEvent inactive(QEvent::ApplicationDeactivate);
    QCoreApplication::sendEvent(qApp, &inactive);
    EXPECT_EQ(openPopovers().size(), 1U);
}

TEST_F(DashboardScreenTest, ThePopoverFollowsItsWindow)
{
    openList();
    const QPoint before = openPopovers().front()->arrowTip();
    m_window.move(m_window.pos() + QPoint(37, 23));
    QCoreApplication::processEvents();
    EXPECT_EQ(openPopovers().front()->arrowTip(), before + QPoint(37, 23));
}

TEST_F(DashboardScreenTest, ThePopoverStaysAtItsIconWhenTheWindowIsResizedInOneStep)
{
    m_dashboard.view->setMinimumSize(0, 0); // the offscreen platform's screen leaves no room to grow
    m_window.setMinimumSize(0, 0);
    QTest::qWait(1);
    click(outlet("settingsIcon"));
    auto& icon = outlet("settingsIcon");
    const QPoint before = icon.mapToGlobal(QPoint());
    m_window.resize(700, m_window.height());
    QCoreApplication::processEvents();
    ASSERT_NE(icon.mapToGlobal(QPoint()), before);
    ASSERT_EQ(openPopovers().size(), 1U);
    EXPECT_EQ(openPopovers().front()->arrowTip(), icon.mapToGlobal(QPoint(icon.width() / 2, icon.height())));
}

TEST_F(DashboardScreenTest, AskingForAnOpenListLeavesItOpen)
{
    outlet<QPushButton>("connectButton").click();
    ASSERT_EQ(openPopovers().size(), 1U);
    outlet<QPushButton>("connectButton").click(); // as a screen reader does, without the mouse
    EXPECT_EQ(openPopovers().size(), 1U);
    click(outlet("devicesListIcon"));
    EXPECT_TRUE(openPopovers().empty());
}

TEST_F(DashboardScreenTest, AReturnKeyThatIsHeldPressesTheCastButtonOnce)
{
    pair();
    auto& button = outlet<RoundButton>("castButtonView");
    int clicks = 0;
    QObject::connect(&button, &RoundButton::clicked, [&clicks] { ++clicks; });
    for (const bool isRepeat : {false, true, true, true}) {
        QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", isRepeat);
        QApplication::sendEvent(&button, &press);
    }
    EXPECT_EQ(clicks, 1);
}

TEST_F(DashboardScreenTest, TheCastButtonsTipSaysWhatAPressDoes)
{
    pair();
    EXPECT_EQ(outlet("castButtonView").toolTip(), "Cast the screen to the panel");
    click(outlet("castButtonView"));
    EXPECT_EQ(outlet("castButtonView").toolTip(), "Stop casting to the panel");
    click(outlet("castButtonView"));
    EXPECT_EQ(outlet("castButtonView").toolTip(), "Cast the screen to the panel");
}

TEST_F(DashboardScreenTest, OnTheHdmiPageTheHelpIsQuieterThanTheInstruction)
{
    const auto color = [this](
                           const char* label) { return outlet(label).palette().color(QPalette::WindowText); };
    EXPECT_EQ(color("facingProblemLabel"), QColor(Theme::secondaryText));
    EXPECT_EQ(color("deviceHDMISubLabel"), QColor(Theme::text));
}

TEST_F(DashboardScreenTest, TheMaskLiesOverAllPanesAndNotOverTheToolbar)
{
    pair();
    outlet("maskView").show();
    QTest::qWait(1); // the layout
    const QRect mask = outlet("maskView").geometry();
    EXPECT_EQ(mask.top(), outlet("toolbarView").geometry().bottom() + 1);
    EXPECT_TRUE(mask.contains(outlet("panesView").geometry()));
    EXPECT_TRUE(mask.contains(outlet("hdmiToggleView").geometry()));
    EXPECT_EQ(m_dashboard.view->childAt(mask.center()), &outlet("maskView"));

    outlet<MaskingViewWidget>("maskView").setMaskEnabled(true);
    EXPECT_NE(m_dashboard.view->childAt(mask.center()), &outlet("maskView"));
}

TEST_F(DashboardScreenTest, TabGoesThroughTheControlsInReadingOrder)
{
    pair();
    outlet("devicesListIcon").setFocus(Qt::TabFocusReason);
    EXPECT_THAT(tabOrder(5),
        ::testing::ElementsAre(
            "devicesListIcon", "settingsIcon", "fileUploadButton", "castButtonView", "wirelessTouchSwitch"));
    EXPECT_EQ(focused().objectName(), "devicesListIcon");
}

TEST_F(DashboardScreenTest, EveryControlLooksDifferentWithTheKeyboardOnIt)
{
    expectVisibleFocus(outlet("connectButton"));
    pair();
    for (const char* name :
        {"devicesListIcon", "settingsIcon", "fileUploadButton", "castButtonView", "wirelessTouchSwitch"})
        expectVisibleFocus(outlet(name));
}

TEST_F(DashboardScreenTest, EveryControlOfThePopoversLooksDifferentWithTheKeyboardOnIt)
{
    openList();
    expectVisibleFocus(table()); // empty
    announce("Meridian 65|Room 204|0A00020F");
    clickRow(0);
    expectVisibleFocus(find(list(), "disconnectButton"));
    click(outlet("settingsIcon"));
    for (const char* name :
        {"fpsButton", "sessionPresentButton", "switchDeviceButton", "switchAudioDeviceButton"})
        expectVisibleFocus(find(m_window, name));
}

TEST_F(DashboardScreenTest, NoControlHasARingAfterAMouseClick)
{
    pair();
    for (const char* name : {"fileUploadButton", "castButtonView", "wirelessTouchSwitch", "settingsIcon"}) {
        auto& control = outlet(name);
        reachByKeyboard(control);
        EXPECT_EQ(rings(), 1) << name;
        QTest::mousePress(&control, Qt::LeftButton);
        EXPECT_EQ(rings(), 0) << name;
        for (const auto reason :
            {Qt::MouseFocusReason, Qt::TabFocusReason}) { // by which a hidden control passes on
            control.clearFocus();
            control.setFocus(reason);
            EXPECT_EQ(rings(), 0) << name;
        }
        QTest::mouseRelease(&control, Qt::LeftButton, {}, {-9, -9});
    }
}

TEST_F(DashboardScreenTest, NothingHasARingAfterAClickOpensAPopoverOrHidesWhatHasTheKeyboard)
{
    click(outlet("settingsIcon"));
    EXPECT_EQ(focused().objectName(), "fpsButton");
    EXPECT_EQ(rings(), 0);
    openListOfThree();
    clickRow(0);
    click(find(list(), "disconnectButton"));
    EXPECT_FALSE(find(list(), "disconnectButton").isVisible());
    EXPECT_EQ(rings(), 0);
}

TEST_F(DashboardScreenTest, ThePopoverThatAKeyOpensShowsWhereTheKeyboardIs)
{
    reachByKeyboard(outlet("settingsIcon"));
    QTest::keyClick(&focused(), Qt::Key_Space);
    EXPECT_EQ(focused().objectName(), "fpsButton");
    EXPECT_EQ(rings(), 1);
}

TEST_F(DashboardScreenTest, AnAlertThatAClickOpensHasNoRing)
{
    pair();
    QTest::mouseClick(&outlet("castButtonView"), Qt::LeftButton);
    QMessageBox alert;
    QPushButton* button = alert.addButton("OK", QMessageBox::AcceptRole);
    alert.setDefaultButton(button);
    alert.show();
    alert.activateWindow();
    QCoreApplication::processEvents();
    EXPECT_EQ(button->findChild<QFocusFrame*>(), nullptr);
    QTest::keyClick(button, Qt::Key_Tab); // which finds nothing else
    EXPECT_NE(button->findChild<QFocusFrame*>(), nullptr);
}

TEST_F(DashboardScreenTest, TheLineAboutTouchesShowsWhileTheyAreExpected)
{
    auto& label = outlet<QLabel>("touchStateLabel");
    EXPECT_FALSE(label.isVisible());
    m_dashboard.view->setTouchState(TouchState::awaited, "");
    EXPECT_TRUE(label.isVisible());
    EXPECT_EQ(label.text(), "Waiting for the first touch");
    m_dashboard.view->setTouchState(TouchState::worksFromElsewhere, "10.0.2.99");
    EXPECT_EQ(label.text(), "Touch works, but from 10.0.2.99, which is not the panel's address");
    m_dashboard.view->setTouchState(TouchState::notExpected, "");
    EXPECT_FALSE(label.isVisible());
}

TEST_F(DashboardScreenTest, WhatKeepsTouchesFromTheDesktopIsShownInsteadOfTheirStateWhileTheyAreExpected)
{
    auto& label = outlet<QLabel>("touchStateLabel");
    m_dashboard.view->setTouchObstacle("No touch: the desktop's dialog was cancelled");
    EXPECT_FALSE(label.isVisible());
    m_dashboard.view->setTouchState(TouchState::works, "");
    EXPECT_TRUE(label.isVisible());
    EXPECT_EQ(label.text(), "No touch: the desktop's dialog was cancelled");
    m_dashboard.view->setTouchObstacle("");
    EXPECT_EQ(label.text(), "Touch works");
}

TEST_F(DashboardScreenTest, TheRingIsNoPartOfTheAccessibilityTree)
{
    pair();
    auto& button = outlet("fileUploadButton");
    reachByKeyboard(button);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&button)->childCount(), 0);
}

TEST_F(DashboardScreenTest, AnAlertsButtonLooksDifferentWithTheKeyboardOnIt)
{
    QMessageBox alert;
    QPushButton* button = alert.addButton("OK", QMessageBox::AcceptRole);
    alert.show();
    alert.activateWindow();
    QTest::keyClick(button, Qt::Key_Tab);
    expectVisibleFocus(*button);
}

} // namespace
} // namespace companion::testing
