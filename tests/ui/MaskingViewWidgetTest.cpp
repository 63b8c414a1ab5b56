#include "ui/MaskingViewWidget.h"
#include "platform/testing/FakeLog.h"
#include "tests/ui/EventCounter.h"
#include "ui/ImageView.h"

#include <gtest/gtest.h>

#include <QPushButton>
#include <QTest>

namespace companion::testing {
namespace {

/// A mask over a button, holding a button, a picture, and a container with a button in it.
class MaskingViewWidgetTest : public ::testing::Test {
protected:
    MaskingViewWidgetTest()
    {
        m_window.resize(400, 300);
        m_below->setGeometry(0, 0, 400, 300);
        m_mask->setGeometry(0, 0, 400, 300);
        m_mask->setLog(m_log);
        m_inside->setGeometry(10, 10, 100, 40);
        m_picture->setGeometry(200, 10, 100, 40);
        m_container->setGeometry(10, 100, 200, 100);
        m_deep->setGeometry(10, 10, 100, 40);
        m_below->setFocusPolicy(Qt::NoFocus); // the redraw of what lies below is one of the mask, too
        m_window.show();
        QTest::qWait(20); // it is drawn
        QObject::connect(m_below, &QPushButton::clicked, [this] { m_transcript.add("below"); });
        QObject::connect(m_inside, &QPushButton::clicked, [this] { m_transcript.add("inside"); });
        QObject::connect(m_deep, &QPushButton::clicked, [this] { m_transcript.add("deep"); });
    }

    /// Clicks what the window finds there, as a real pointer would.
    void clickAt(QPoint place)
    {
        QWidget* hit = m_window.childAt(place);
        ASSERT_NE(hit, nullptr);
        QTest::mouseClick(hit, Qt::LeftButton, {}, hit->mapFrom(&m_window, place));
    }

    Transcript m_transcript;
    FakeSystemLog m_log{m_transcript};
    QWidget m_window;
    QPushButton* m_below = new QPushButton(&m_window);
    MaskingViewWidget* m_mask = new MaskingViewWidget(&m_window);
    QPushButton* m_inside = new QPushButton(m_mask);
    ImageView* m_picture = new ImageView(m_mask);
    QWidget* m_container = new QWidget(m_mask);
    QPushButton* m_deep = new QPushButton(m_container);
};

TEST_F(MaskingViewWidgetTest, ARedrawDisablesTheControlsDirectlyInItAndNothingElse)
{
    m_window.grab();
    EXPECT_FALSE(m_inside->isEnabled());
    EXPECT_TRUE(m_picture->isEnabled());
    EXPECT_TRUE(m_container->isEnabled());
    EXPECT_TRUE(m_deep->isEnabled());
}

TEST_F(MaskingViewWidgetTest, EnablingLastsUntilTheNextRedraw)
{
    m_window.grab();
    m_mask->enableSubViews();
    EXPECT_TRUE(m_inside->isEnabled());
    m_window.grab();
    EXPECT_FALSE(m_inside->isEnabled());
}

TEST_F(MaskingViewWidgetTest, AClickOnTheViewItselfIsLoggedAndGoesNoFurther)
{
    clickAt({350, 250});
    EXPECT_EQ(m_transcript.take(), "log Mouse down");
}

TEST_F(MaskingViewWidgetTest, AClickOfAnotherButtonIsNotLoggedAndPassedOn)
{
    const EventCounter beneath(m_window, QEvent::MouseButtonPress);
    QTest::mouseClick(m_mask, Qt::RightButton, {}, {350, 250});
    QTest::mouseClick(m_mask, Qt::MiddleButton, {}, {350, 250});
    EXPECT_EQ(m_transcript.take(), "");
    EXPECT_EQ(beneath.count, 2);
    QTest::mouseClick(m_mask, Qt::LeftButton, {}, {350, 250});
    EXPECT_EQ(beneath.count, 2);
}

TEST_F(MaskingViewWidgetTest, WithoutMaskingItsEnabledButtonsTakeClicks)
{
    EXPECT_FALSE(m_mask->maskEnabled());
    m_mask->enableSubViews();
    clickAt({20, 20});
    EXPECT_EQ(m_transcript.take(), "inside");
}

TEST_F(MaskingViewWidgetTest, WhileMaskingEveryClickFallsThroughToWhatLiesBelow)
{
    m_mask->setMaskEnabled(true);
    EXPECT_TRUE(m_mask->maskEnabled());
    clickAt({20, 20});
    clickAt({30, 120});
    clickAt({350, 250});
    EXPECT_EQ(m_transcript.take(), "below\nbelow\nbelow");
    m_mask->setMaskEnabled(false);
    clickAt({30, 120});
    EXPECT_EQ(m_transcript.take(), "deep");
}

} // namespace
} // namespace companion::testing
