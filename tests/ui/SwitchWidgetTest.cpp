#include "platform/testing/FakeLog.h"
#include "tests/ui/EventCounter.h"
#include "ui/ITSwitchWidget.h"

#include <algorithm>
#include <ctime>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
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

    QColor pixel(int x, int y)
    {
        return m_widget.grab().toImage().pixelColor(QPoint(x, y) * m_widget.devicePixelRatioF());
    }

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

TEST_F(SwitchWidgetTest, AKnobThatIsDraggedArrivesIn400MillisecondsHoweverOftenThePointerMoves)
{
    QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
    finish();
    QTest::mouseMove(&m_widget, {33, 18});
    for (int move = 1; move <= 50; ++move) { // one in 8 ms, as a mouse does
        setTime(animation().currentTime() + 8);
        QTest::mouseMove(&m_widget, {34 + move % 20, 18});
    }
    expectKnob(56 - pressedKnobWidth - 2, pressedKnobWidth);
    QTest::mouseRelease(&m_widget, Qt::LeftButton, {}, {40, 18});
    EXPECT_EQ(m_actions, 1);
}

TEST_F(SwitchWidgetTest, AnAlertThatCutsOffADragLeavesTheSwitchAsItWas)
{
    QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
    QTest::mouseMove(&m_widget, {50, 18});
    {
        QDialog alert;
        alert.setWindowModality(Qt::ApplicationModal);
        alert.show();
        QCoreApplication::processEvents();
    }
    EXPECT_FALSE(m_model.isActive());
    EXPECT_FALSE(m_model.hasDragged());
    QTest::mouseMove(&m_widget, {52, 18}); // the button may still be down
    QTest::mouseRelease(&m_widget, Qt::LeftButton, {}, {52, 18});
    finish();
    expectKnob(2, knobWidth);
    EXPECT_EQ(m_actions, 0);

    QTest::mouseClick(&m_widget, Qt::LeftButton, {}, {10, 18});
    EXPECT_TRUE(m_model.checked());
    EXPECT_EQ(m_actions, 1);
}

TEST_F(SwitchWidgetTest, ASwitchThatIsHiddenOrDisabledInADragStaysAsItWas)
{
    for (const auto change : {&QWidget::setVisible, &QWidget::setEnabled}) {
        QTest::mousePress(&m_widget, Qt::LeftButton, {}, {10, 18});
        QTest::mouseMove(&m_widget, {50, 18});
        std::invoke(change, m_widget, false);
        std::invoke(change, m_widget, true);
        finish();
        expectKnob(2, knobWidth);
        EXPECT_EQ(m_actions, 0);
    }
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

TEST_F(SwitchWidgetTest, ASpaceBarThatIsHeldTogglesOnce)
{
    QTest::keyPress(&m_widget, Qt::Key_Space);
    for (int repeat = 0; repeat < 4; ++repeat) {
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier, " ", /*autorep=*/true);
        QApplication::sendEvent(&m_widget, &held);
    }
    EXPECT_TRUE(m_model.checked());
    EXPECT_EQ(m_actions, 1);
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
    const auto overWindow = [](int tint, int under) { return tint * 0.75 + under * 0.25; };
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

TEST_F(SwitchWidgetTest, ADisabledKnobIsHalfSeenThroughAsAWhole)
{
    m_widget.clearFocus();
    QPalette palette = m_widget.palette();
    palette.setColor(QPalette::Window, QColor(200, 200, 200));
    m_widget.setPalette(palette);
    m_model.setChecked(true);
    finish();
    EXPECT_EQ(pixel(42, 18), QColor(255, 255, 255));
    m_widget.setEnabled(false);
    finish();
    for (const int channel : {pixel(42, 18).red(), pixel(42, 18).green(), pixel(42, 18).blue()})
        EXPECT_NEAR(
            channel, (255 + 200) / 2.0, 1.5); // the white knob at half opacity, and no track through it
}

TEST_F(SwitchWidgetTest, TheOpacityChangesInTheAnimationsTimeToo)
{
    const auto green = [this] { return pixel(20, 18).green(); };
    const int enabled = green();
    m_widget.setEnabled(false);
    setTime(0);
    EXPECT_EQ(green(), enabled);
    setTime(40);
    const int onTheWay = green();
    finish();
    EXPECT_GT(onTheWay, std::min(enabled, green()));
    EXPECT_LT(onTheWay, std::max(enabled, green()));
}

TEST_F(SwitchWidgetTest, TheKnobCastsAShadowDownwardsAndItsInsideOneAllAround)
{
    m_widget.clearFocus();   // whose ring shows if the test before this one used the keyboard
    m_widget.resize(67, 36); // so that the knob ends at 36 points, but for a hundredth
    QCoreApplication::processEvents();
    const auto darkness = [this](
                              double x, double y) { // in points of the track, which lies 4 points further in
        const QImage image = m_widget.grab().toImage();
        const QPointF at = QPointF(x + 4, y + 4) * m_widget.devicePixelRatioF();
        return 255 - qGray(image.pixel(int(at.x()), int(at.y())));
    };
    EXPECT_GT(darkness(18, 28.5), 15) << "the knob's own, below the track";
    EXPECT_EQ(darkness(18, -1.5), 0);
    EXPECT_GT(darkness(36.3, 14), 33) << "either alone is no darker than 30";
    EXPECT_EQ(darkness(40, 14), 0);
}

TEST_F(SwitchWidgetTest, TheBorderOfTheTrackLiesOverTheShadowOfTheKnob)
{
    m_widget.clearFocus();
    m_widget.resize(208, 108); // so that the border below the knob is far from its round ends
    finish();
    const int belowKnob = pixel(4 + 80, 4 + 99).green();
    const int elsewhere = pixel(4 + 145, 4 + 99).green();
    EXPECT_LE(
        elsewhere - belowKnob, 0.25 * 0.3 * 255); // what a border of 75 % lets through of a shadow of 30 %
}

TEST_F(SwitchWidgetTest, TheTracksBorderIsTwoPointsOfOneColourWithSharpEdges)
{
    m_widget.clearFocus();
    finish();
    const QImage image = m_widget.grab().toImage();
    const double ratio = image.devicePixelRatio();
    const int middle = qRound(42 * ratio); // between the knob and the round end
    const int top = qRound(4 * ratio);
    const int thickness = qRound(2 * ratio);
    const QColor window = m_widget.palette().window().color();
    EXPECT_EQ(image.pixelColor(middle, top - 1), window);
    for (int y = top; y < top + thickness; ++y)
        EXPECT_EQ(image.pixelColor(middle, y), image.pixelColor(middle, top)) << y;
    EXPECT_NE(image.pixelColor(middle, top), window);
    EXPECT_EQ(image.pixelColor(middle, top + thickness), window);
}

TEST_F(SwitchWidgetTest, NothingIsAnimatedWhereNothingChanges)
{
    m_model.setChecked(false);
    EXPECT_EQ(animation().state(), QAbstractAnimation::Stopped);
}

TEST_F(SwitchWidgetTest, TheAnimationIsPaintedManyTimesInItsFourTenthsOfASecond)
{
    const EventCounter paints(m_widget, QEvent::Paint);
    m_model.setChecked(true);
    QTest::qWait(500);
    RecordProperty("paints", paints.count);
    EXPECT_GE(paints.count, 13); // at 60 a second they are 25; the computer may be busy
}

TEST_F(SwitchWidgetTest, AFrameTakesLessThanAQuarterOfASixtiethOfASecond)
{
    m_model.setChecked(true);
    std::vector<double> milliseconds;
    for (int time = 0; time <= 400; time += 16) {
        setTime(time);
        const std::clock_t before = std::clock(); // the processor's time: others may be using it, too
        m_widget.repaint();
        milliseconds.push_back(1000.0 * static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC);
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    const double median = milliseconds[milliseconds.size() / 2];
    RecordProperty("medianMicroseconds", static_cast<int>(1000 * median));
    EXPECT_LT(median, 1000.0 / 60 / 4);
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
