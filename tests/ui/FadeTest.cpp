#include "ui/Fade.h"
#include "tests/ui/ScreenTest.h"
#include "ui/Theme.h"

#include <QAccessible>
#include <QElapsedTimer>
#include <QFocusFrame>

namespace companion::testing {
namespace {

class FadeTest : public ScreenTest {
protected:
    FadeTest() { allowMotion(true); }
    ~FadeTest() override { allowMotion(false); }

    QList<QFocusFrame*> fades() { return m_dashboard.view->findChildren<QFocusFrame*>(); }

    void expectToEnd()
    {
        QElapsedTimer time;
        time.start();
        EXPECT_EQ(fades().size(), 1);
        EXPECT_TRUE(QTest::qWaitFor([this] { return fades().isEmpty(); }));
        EXPECT_GE(time.elapsed(), 120);
    }
};

TEST_F(FadeTest, APopoverComesAndGoesGraduallyAndTakesTheKeyboardAtOnce)
{
    const QImage before = m_dashboard.view->grab().toImage();
    click(outlet("settingsIcon"));
    EXPECT_EQ(focused().objectName(), "fpsButton");
    EXPECT_EQ(m_dashboard.view->grab().toImage().pixel(before.rect().center()),
        before.pixel(before.rect().center()));
    expectToEnd();
    click(outlet("settingsIcon"));
    EXPECT_FALSE(find(m_window, "fpsButton").isVisible());
    expectToEnd();
}

TEST_F(FadeTest, TheCastButtonChangesGradually)
{
    pair();
    EXPECT_TRUE(QTest::qWaitFor([this] { return fades().isEmpty(); }));
    const QPoint onButton = outlet("castButtonView").mapTo(m_dashboard.view, QPoint(64, 12));
    const QColor inactive = pixel(*m_dashboard.view, onButton);
    click(outlet("castButtonView"));
    EXPECT_EQ(pixel(*m_dashboard.view, onButton), inactive);
    expectToEnd();
    EXPECT_NE(pixel(*m_dashboard.view, onButton), inactive);
}

TEST_F(FadeTest, TheDropAreaChangesGraduallyAndAllOfItAtOnce)
{
    pair();
    EXPECT_TRUE(QTest::qWaitFor([this] { return fades().isEmpty(); }));
    m_dashboard.view->fileUploadView().draggingEntered();
    expectToEnd();
    m_dashboard.view->fileUploadView().draggingUpdated();
    EXPECT_EQ(fades().size(), 0) << "a move changes nothing";
    m_dashboard.view->fileUploadView().draggingExited();
    expectToEnd();
}

TEST_F(FadeTest, AChangeDuringAChangeBeginsWhereThatOneIs)
{
    pair();
    EXPECT_TRUE(QTest::qWaitFor([this] { return fades().isEmpty(); }));
    m_dashboard.view->fileUploadView().draggingEntered();
    QTest::qWait(60);
    m_dashboard.view->fileUploadView().draggingExited();
    EXPECT_EQ(fades().size(), 1);
    expectToEnd();
}

TEST_F(FadeTest, ClicksReachWhatLiesBelow)
{
    openListOfThree();
    QCoreApplication::processEvents();
    const QPoint row = table().viewport()->mapTo(
        m_dashboard.view, table().visualRect(table().model()->index(1, 0)).center());
    QWidget* const hit = m_dashboard.view->childAt(row);
    EXPECT_EQ(fades().size(), 1);
    EXPECT_EQ(hit, table().viewport());
}

TEST_F(FadeTest, WithoutMotionEverythingChangesAtOnce)
{
    allowMotion(false);
    click(outlet("settingsIcon"));
    EXPECT_TRUE(fades().isEmpty());
    pair();
    m_dashboard.view->fileUploadView().draggingEntered();
    click(outlet("castButtonView"));
    EXPECT_TRUE(fades().isEmpty());
}

TEST_F(FadeTest, ScreenReadersFindNothingOfIt)
{
    pair();
    EXPECT_TRUE(QTest::qWaitFor([this] { return fades().isEmpty(); }));
    auto& card = outlet("castCardView");
    const int children = QAccessible::queryAccessibleInterface(&card)->childCount();
    click(outlet("castButtonView"));
    EXPECT_EQ(fades().size(), 1);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&card)->childCount(), children);
}

} // namespace
} // namespace companion::testing
