#include "platform/testing/FakeLog.h"
#include "views/qt/ITSwitchWidget.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

namespace companion::testing {
namespace {

/// A second way to the curve: walk along it until its x is reached.
double overshootingCurve(double time)
{
    double y = 0;
    for (double t = 0; t <= 1; t += 1e-5) {
        const double u = 1 - t;
        if (3 * u * u * t * 0.25 + 3 * u * t * t * 0.5 + t * t * t > time)
            break;
        y = 3 * u * u * t * 1.5 + 3 * u * t * t * 1.0 + t * t * t;
    }
    return y;
}

/// A track of 56 by 28 points, on the screen.
class SwitchWidgetTest : public ::testing::Test {
protected:
    static constexpr double knobWidth = 52 / double(1.618034F);
    static constexpr double pressedKnobWidth = 52 / 1.38;

    SwitchWidgetTest()
    {
        m_model.setAction([this](ITSwitch&) { ++m_actions; });
        m_widget.resize(64, 36);
        m_widget.setModel(m_model);
        m_widget.show();
        m_widget.activateWindow();
        m_widget.setFocus();
        QCoreApplication::processEvents();
        finish();
    }
    ~SwitchWidgetTest() override { m_model.setAction({}); }

    QVariantAnimation& animation() { return *m_widget.findChild<QVariantAnimation*>(); }
    void finish() { animation().setCurrentTime(animation().duration()); }

    /// Stops the clock of the animation and sets it.
    void setTime(int milliseconds)
    {
        animation().pause();
        animation().setCurrentTime(milliseconds);
    }

    QColor pixel(double x, double y) { return m_widget.grab().toImage().pixelColor(int(x), int(y)); }

    void expectKnob(double x, double width)
    {
        const QRectF knob = m_widget.shownKnob();
        EXPECT_NEAR(knob.x(), x, 0.01);
        EXPECT_NEAR(knob.width(), width, 0.01);
        EXPECT_EQ(knob.y(), 2);
        EXPECT_EQ(knob.height(), 24);
    }

    Transcript m_transcript;
    FakeSystemLog m_log{m_transcript};
    ITSwitch m_model{m_log};
    ITSwitchWidget m_widget;
    int m_actions = 0;
};

TEST_F(SwitchWidgetTest, EveryFrameOfTheKnobLiesOnTheOvershootingCurve)
{
    ASSERT_EQ(animation().duration(), 400);
    m_model.setChecked(true);
    const double end = 56 - knobWidth - 2;
    double furthest = 0;
    for (int time = 0; time <= 400; time += 8) {
        setTime(time);
        expectKnob(2 + (end - 2) * overshootingCurve(time / 400.0), knobWidth);
        furthest = std::max(furthest, m_widget.shownKnob().x());
    }
    EXPECT_GT(furthest, end + 0.5); // it overshoots
    expectKnob(end, knobWidth);     // and settles
}

TEST_F(SwitchWidgetTest, AChangeOnTheWayStartsFromWhereTheKnobIs)
{
    m_model.setChecked(true);
    setTime(56);
    const double where = m_widget.shownKnob().x();
    m_model.setChecked(false);
    setTime(0);
    expectKnob(where, knobWidth);
    setTime(400);
    expectKnob(2, knobWidth);
}

TEST_F(SwitchWidgetTest, ThePressedKnobIsWider)
{
    QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
    finish();
    expectKnob(2, pressedKnobWidth);
    QTest::mouseRelease(&m_widget, Qt::LeftButton, {}, {10, 18});
    finish();
    expectKnob(56 - knobWidth - 2, knobWidth);
    EXPECT_EQ(m_actions, 1);
}

TEST_F(SwitchWidgetTest, ADraggedKnobFollowsToTheNearerEndInTheDefaultTiming)
{
    QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
    finish();
    QTest::mouseMove(&m_widget, {32, 18}); // the middle of the track belongs to the right half
    EXPECT_TRUE(m_model.isDraggingTowardsOn());
    setTime(200);
    const double end = 56 - pressedKnobWidth - 2;
    EXPECT_NEAR(
        m_widget.shownKnob().x(), 2 + (end - 2) * 0.802, 0.05); // the curve (0.25, 0.1, 0.25, 1) half way
    QTest::mouseMove(&m_widget, {31, 18});
    EXPECT_FALSE(m_model.isDraggingTowardsOn());
    QTest::mouseRelease(&m_widget, Qt::LeftButton, {}, {31, 18});
    EXPECT_EQ(m_actions, 0);
    EXPECT_FALSE(m_model.checked());
}

TEST_F(SwitchWidgetTest, AReleaseOutsideTheControlStillToggles)
{
    QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
    QTest::mouseRelease(&m_widget, Qt::LeftButton, {}, {10, 300});
    EXPECT_TRUE(m_model.checked());
    EXPECT_EQ(m_actions, 1);
}

TEST_F(SwitchWidgetTest, OnlyTheLeftButtonCounts)
{
    QTest::mouseClick(&m_widget, Qt::RightButton, {}, {10, 18});
    EXPECT_FALSE(m_model.checked());
}

TEST_F(SwitchWidgetTest, CodeNeverSendsTheAction)
{
    m_model.setChecked(true);
    m_model.setChecked(false);
    EXPECT_EQ(m_actions, 0);
}

TEST_F(SwitchWidgetTest, SpaceTogglesAndTheArrowsTurnOnAndOff)
{
    QTest::keyClick(&m_widget, Qt::Key_Space);
    EXPECT_TRUE(m_model.checked());
    QTest::keyClick(&m_widget, Qt::Key_Right);
    EXPECT_EQ(m_actions, 1);
    QTest::keyClick(&m_widget, Qt::Key_Left);
    EXPECT_FALSE(m_model.checked());
    EXPECT_EQ(m_actions, 2);
    QTest::keyClick(&m_widget, Qt::Key_A);
    EXPECT_EQ(m_actions, 2);
}

TEST_F(SwitchWidgetTest, WithoutTheKeyboardFocusSpaceDoesNothing)
{
    m_widget.clearFocus();
    QTest::keyClick(&m_widget, Qt::Key_Space);
    EXPECT_FALSE(m_model.checked());
}

TEST_F(SwitchWidgetTest, OnItIsFilledAndItsKnobWhiteOffItIsClearAndItsKnobTinted)
{
    m_widget.clearFocus();
    m_model.setChecked(true);
    finish();
    const QColor window = m_widget.palette().window().color();
    const auto overWindow = [&window](int tint, int under) { return tint * 0.75 + under * 0.25; };
    const QColor track = pixel(16, 18);
    EXPECT_NEAR(track.red(), overWindow(28, window.red()), 2);
    EXPECT_NEAR(track.green(), overWindow(189, window.green()), 2);
    EXPECT_NEAR(track.blue(), overWindow(157, window.blue()), 2);
    EXPECT_EQ(pixel(42, 18), QColor(255, 255, 255));

    m_model.setChecked(false);
    finish();
    EXPECT_EQ(pixel(48, 18), window);
    EXPECT_NEAR(pixel(20, 18).green(), overWindow(189, 255), 2); // the tint over the white knob
}

TEST_F(SwitchWidgetTest, ColoursDoNotOvershoot)
{
    m_model.setChecked(true);
    setTime(240); // the curve is above 1 here
    ASSERT_GT(m_widget.shownKnob().x(), 56 - knobWidth - 2);
    EXPECT_EQ(pixel(42, 18), QColor(255, 255, 255));
}

TEST_F(SwitchWidgetTest, ADisabledSwitchIsHalfAsOpaqueAndIgnoresTheMouse)
{
    m_widget.clearFocus();
    m_model.setChecked(true);
    finish();
    const QColor window = m_widget.palette().window().color();
    const QColor enabled = pixel(16, 18);
    m_widget.setEnabled(false);
    finish();
    EXPECT_NEAR(pixel(16, 18).red(), (enabled.red() + window.red()) / 2, 2);
    QTest::mouseClick(&m_widget, Qt::LeftButton, {}, {10, 18});
    EXPECT_TRUE(m_model.checked());
    EXPECT_EQ(m_actions, 0);
}

/// Counts how often a view is painted.
class PaintCounter : public QObject {
public:
    explicit PaintCounter(QWidget& view) { view.installEventFilter(this); }

    bool eventFilter(QObject*, QEvent* event) override
    {
        count += event->type() == QEvent::Paint;
        return false;
    }

    int count = 0;
};

TEST_F(SwitchWidgetTest, TheAnimationIsPaintedManyTimesInItsFourTenthsOfASecond)
{
    const PaintCounter paints(m_widget);
    m_model.setChecked(true);
    QTest::qWait(500);
    RecordProperty("paints", paints.count);
    EXPECT_GE(paints.count, 13); // at 60 a second they are 25; the computer may be busy
}

TEST_F(SwitchWidgetTest, NothingRunsOnceTheAnimationIsOver)
{
    m_model.setChecked(true);
    EXPECT_EQ(animation().state(), QAbstractAnimation::Running);
    QTest::qWait(500);
    EXPECT_EQ(animation().state(), QAbstractAnimation::Stopped);
    expectKnob(56 - knobWidth - 2, knobWidth);
}

} // namespace
} // namespace companion::testing
