#include "touchback/MouseSimulate.h"

#include "platform/testing/FakeClock.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMouseEventPoster.h"
#include "platform/testing/FakeScreen.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <string>

namespace companion {

void PrintTo(const Point& point, std::ostream* out)
{
    *out << '(' << point.x << ", " << point.y << ')';
}

} // namespace companion

namespace companion::testing {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr Point somewhere{1011.25, 417.5};

Point movedBy(Point point, double x, double y)
{
    return {point.x + x, point.y + y};
}

} // namespace

class MouseSimulateTest : public ::testing::Test {
protected:
    /// What was posted, printed and paused since the last call, in order.
    std::string taken() { return transcript.take(", "); }

    void touch(std::string_view event, std::string_view x, std::string_view y)
    {
        mouse.initiateMouseEventWithEvent(event, x, y, "1712345678321");
    }

    Point lastPoint() const { return poster.posted.empty() ? Point{-1, -1} : poster.posted.back().at; }

    /// Releases at `somewhere` and then, `milliseconds` later, at `second`; what the second one did.
    std::string secondRelease(double milliseconds, Point second)
    {
        mouse.simulateMouseUp(somewhere);
        clock.seconds += milliseconds / 1000;
        transcript.clear();
        mouse.simulateMouseUp(second);
        return taken();
    }

    static std::string doubleClick(const std::string& distance)
    {
        return "print ::: Double Click distance " + distance
            + ", down1, up1, pause 1000us, down2, up2, print ::: Double Click";
    }

    Transcript transcript;
    FakeClock clock;
    FakeScreen screen;
    FakePause pause{transcript};
    FakeMouseEventPoster poster{transcript};
    FakeConsole console{transcript};
    MouseSimulate mouse{clock, screen, pause, poster, console};
};

using MouseSimulateDeathTest = MouseSimulateTest;

// Before the first message

TEST_F(MouseSimulateTest, StartsWithZeroesAndItsUnusedDelayIsHalfASecond)
{
    EXPECT_EQ(MouseSimulate::kDelayUSec, 500'000u);
    EXPECT_EQ(mouse.mouseDownPoint(), (Point{0, 0}));
    EXPECT_EQ(mouse.mouseUpPoint(), (Point{0, 0}));
    EXPECT_EQ(mouse.mouseDownTime(), 0);
    EXPECT_EQ(mouse.mouseUpTime(), 0);
    EXPECT_EQ(mouse.singleClickCount(), 0);
    EXPECT_EQ(mouse.rightClickCount(), 0);
}

// Dispatch and scaling

TEST_F(MouseSimulateTest, EachEventWordHasItsAction)
{
    touch("DOWN", "100", "200");
    EXPECT_EQ(taken(), "down, print ::: Mouse Down");
    touch("MOVE", "100", "200");
    EXPECT_EQ(taken(), "drag");
    touch("UP", "100", "200");
    EXPECT_EQ(taken(), "up, print ::: Mouse Up");
}

TEST_F(MouseSimulateTest, OtherWordsDoNothingThoughTheScreenIsLookedAt)
{
    int words = 0;
    for (const char* word : {"up", "down", "Move", "", "UP ", " UP", "UPX", "MOV", "CLICK", "DOWN\n"}) {
        touch(word, "100", "200");
        EXPECT_EQ(taken(), "") << word;
        EXPECT_EQ(screen.queries, 2 * ++words);
    }
    EXPECT_EQ(mouse.singleClickCount(), 0);
}

TEST_F(MouseSimulateTest, PanelCornersAreTheScreenCornersExactly)
{
    touch("DOWN", "0", "0");
    EXPECT_EQ(lastPoint(), (Point{0, 0}));
    touch("DOWN", "32767", "32767");
    EXPECT_EQ(lastPoint(), (Point{1366, 768}));
    screen.size = Size{2560.5, 1441};
    touch("DOWN", "32767", "32767");
    EXPECT_EQ(lastPoint(), (Point{2560.5, 1441}));
}

TEST_F(MouseSimulateTest, PointsBetweenAreScaledWithoutRounding)
{
    touch("MOVE", "16383", "12041");
    EXPECT_DOUBLE_EQ(lastPoint().x, 682.9791558580279);
    EXPECT_DOUBLE_EQ(lastPoint().y, 282.21955015717035);
    touch("MOVE", "0.5", "32766.75");
    EXPECT_DOUBLE_EQ(lastPoint().x, 0.020844141972106083);
    EXPECT_DOUBLE_EQ(lastPoint().y, 767.9941404461806);
}

TEST_F(MouseSimulateTest, CoordinatesOffThePanelLieOffTheScreen)
{
    touch("MOVE", "-32767", "65534");
    EXPECT_EQ(lastPoint(), (Point{-1366, 1536}));
    touch("MOVE", "9223372036854775808", "-9223372036854775808");
    EXPECT_EQ(lastPoint().x, (9223372036854775808.0 / 32767.0) * 1366);
    EXPECT_EQ(lastPoint().y, (-9223372036854775808.0 / 32767.0) * 768);
}

TEST_F(MouseSimulateTest, ScreenIsAskedForItsWidthAndThenForItsHeightAtEveryMessage)
{
    class TurningScreen : public Screen {
    public:
        std::optional<Size> mainScreenSize() const override
        {
            isTurned = !isTurned;
            return isTurned ? Size{1366, 768} : Size{810, 1440};
        }
        mutable bool isTurned = false;
    };
    TurningScreen turning;
    MouseSimulate onTurning(clock, turning, pause, poster, console);
    onTurning.initiateMouseEventWithEvent("MOVE", "32767", "32767", "");
    EXPECT_EQ(lastPoint(), (Point{1366, 1440}));
}

TEST_F(MouseSimulateTest, CoordinateThatIsNoNumberDropsTheMessageAndChangesNothing)
{
    const std::string manyDigits(400, '9');
    const std::string_view texts[] = {"", "abc", "nan", "inf", "-inf", "1e5", "1e400", "+1", " 1", "1 ",
        "0x10", "-", "1.", ".5", "1,5", manyDigits};
    for (const std::string_view text : texts) {
        for (const char* word : {"DOWN", "MOVE", "UP", "UP"}) {
            touch(word, text, "200");
            touch(word, "100", text);
            touch(word, text, text);
        }
        EXPECT_EQ(taken(), "") << text;
    }
    EXPECT_EQ(screen.queries, 0);
    EXPECT_EQ(poster.mouseEventsMade, 0);
    EXPECT_EQ(mouse.singleClickCount(), 0);
    EXPECT_EQ(mouse.mouseUpTime(), 0);
    EXPECT_EQ(mouse.mouseDownTime(), 0);
}

TEST_F(MouseSimulateTest, TimeStampIsNotUsed)
{
    mouse.initiateMouseEventWithEvent("UP", "100", "200", "");
    EXPECT_EQ(taken(), "up, print ::: Mouse Up");
    mouse.initiateMouseEventWithEvent("UP", "100", "200", "99999999999999999999");
    EXPECT_EQ(taken(), doubleClick("0.0"));
}

// Press and drag

TEST_F(MouseSimulateTest, PressIsPostedThenPrintedAndKept)
{
    mouse.simulateMouseDown(somewhere);
    EXPECT_EQ(taken(), "down, print ::: Mouse Down");
    EXPECT_EQ(lastPoint(), somewhere);
    EXPECT_EQ(poster.posted.back().clickState, 0);
    EXPECT_EQ(mouse.mouseDownPoint(), somewhere);
    EXPECT_EQ(mouse.mouseDownTime(), 1'712'345'678'321);
    EXPECT_EQ(mouse.mouseUpTime(), 0);
}

TEST_F(MouseSimulateTest, DragPostsAndChangesNothing)
{
    mouse.simulateMouseDown(somewhere);
    transcript.clear();
    clock.seconds += 3.0071;
    mouse.simulateMouseDrag({702.5, 11});
    EXPECT_EQ(taken(), "drag");
    EXPECT_EQ(lastPoint(), (Point{702.5, 11}));
    EXPECT_EQ(mouse.mouseDownPoint(), somewhere);
    EXPECT_EQ(mouse.mouseDownTime(), 1'712'345'678'321);
    EXPECT_EQ(mouse.mouseUpPoint(), (Point{0, 0}));
    EXPECT_EQ(mouse.singleClickCount(), 0);
}

// The release rule

TEST_F(MouseSimulateTest, FirstReleaseIsPostedThenPrintedAndKept)
{
    mouse.simulateMouseUp(somewhere);
    EXPECT_EQ(taken(), "up, print ::: Mouse Up");
    EXPECT_EQ(lastPoint(), somewhere);
    EXPECT_EQ(poster.posted.back().clickState, 0);
    EXPECT_EQ(mouse.mouseUpPoint(), somewhere);
    EXPECT_EQ(mouse.mouseUpTime(), 1'712'345'678'321);
    EXPECT_EQ(mouse.singleClickCount(), 1);
    EXPECT_EQ(mouse.mouseDownTime(), 0);
}

TEST_F(MouseSimulateTest, SecondReleaseAfter800MillisecondsIsADoubleClick)
{
    EXPECT_EQ(secondRelease(800, somewhere), doubleClick("0.0"));
    EXPECT_EQ(mouse.singleClickCount(), 0);
}

TEST_F(MouseSimulateTest, SecondReleaseAfter801MillisecondsIsAPlainRelease)
{
    EXPECT_EQ(secondRelease(801, somewhere), "up, print ::: Mouse Up 1");
    EXPECT_EQ(mouse.singleClickCount(), 0);
}

TEST_F(MouseSimulateTest, TimesAreRoundedToMillisecondsBeforeTheyAreCompared)
{
    clock.seconds = 1'712'345'678.3210;
    EXPECT_EQ(secondRelease(800.4, somewhere), doubleClick("0.0"));
    clock.seconds = 1'712'345'678.3210;
    EXPECT_EQ(secondRelease(800.6, somewhere), "up, print ::: Mouse Up 1");
    clock.seconds = 1'712'345'678.3214;
    EXPECT_EQ(secondRelease(800.4, somewhere), "up, print ::: Mouse Up 1");
}

TEST_F(MouseSimulateTest, QuickSecondReleaseExactly50PointsAwayIsADoubleClickThere)
{
    const Point second = movedBy(somewhere, -30, 40);
    EXPECT_EQ(secondRelease(219, second), doubleClick("50.0"));
    ASSERT_EQ(poster.posted.size(), 5u);
    for (std::size_t index = 1; index < 5; ++index)
        EXPECT_EQ(poster.posted[index].at, second);
}

TEST_F(MouseSimulateTest, QuickSecondRelease50Point01PointsAwayPostsNothing)
{
    EXPECT_EQ(secondRelease(219, movedBy(somewhere, 50.01, 0)), "print ::: Double Click distance 50.01");
    EXPECT_EQ(poster.mouseEventsMade, 2) << "the release is made though it is not posted";
    EXPECT_EQ(mouse.singleClickCount(), 0);
}

TEST_F(MouseSimulateTest, QuickSecondReleaseLeavesTheReferencePointAndTime)
{
    secondRelease(799, movedBy(somewhere, 3, 4));
    EXPECT_EQ(mouse.mouseUpPoint(), somewhere);
    EXPECT_EQ(mouse.mouseUpTime(), 1'712'345'678'321);
    secondRelease(799, movedBy(somewhere, 300, 4));
    EXPECT_EQ(mouse.mouseUpPoint(), somewhere);
    EXPECT_EQ(mouse.mouseUpTime(), 1'712'345'679'120);
}

TEST_F(MouseSimulateTest, SlowSecondReleaseMovesTheReferencePointButNotTheTime)
{
    secondRelease(2345, {88.5, 19});
    EXPECT_EQ(mouse.mouseUpPoint(), (Point{88.5, 19}));
    EXPECT_EQ(mouse.mouseUpTime(), 1'712'345'678'321);
    EXPECT_EQ(lastPoint(), (Point{88.5, 19}));
}

TEST_F(MouseSimulateTest, SlowSecondReleaseIsPostedHoweverFarAway)
{
    EXPECT_EQ(secondRelease(801, movedBy(somewhere, 900, 300)), "up, print ::: Mouse Up 1");
}

TEST_F(MouseSimulateTest, SlowSecondReleaseStartsNoNewPair)
{
    secondRelease(801, somewhere);
    clock.seconds += 0.1;
    mouse.simulateMouseUp(somewhere);
    EXPECT_EQ(taken(), "up, print ::: Mouse Up");
    clock.seconds += 0.1;
    mouse.simulateMouseUp(somewhere);
    EXPECT_EQ(taken(), doubleClick("0.0"));
}

TEST_F(MouseSimulateTest, ThreeQuickTapsAreReleaseDoubleClickRelease)
{
    std::string all;
    for (int tap = 0; tap < 3; ++tap) {
        touch("DOWN", "16383", "12041");
        touch("UP", "16383", "12041");
        clock.seconds += 0.15;
        all += taken() + "\n";
    }
    EXPECT_EQ(all,
        "down, print ::: Mouse Down, up, print ::: Mouse Up\n"
        "down, print ::: Mouse Down, "
            + doubleClick("0.0")
            + "\n"
              "down, print ::: Mouse Down, up, print ::: Mouse Up\n");
}

TEST_F(MouseSimulateTest, MovesAndPressesBetweenTheReleasesDoNotUndoThePair)
{
    mouse.simulateMouseUp(somewhere);
    clock.seconds += 0.3;
    touch("MOVE", "1", "32000");
    touch("DOWN", "32000", "1");
    touch("MOVE", "31000", "7");
    transcript.clear();
    mouse.simulateMouseUp(movedBy(somewhere, 1, 3));
    EXPECT_EQ(taken(), doubleClick("3.1622777"));
}

TEST_F(MouseSimulateTest, HalfPairCarriesOverHoweverLongItTakes)
{
    mouse.simulateMouseUp(somewhere);
    clock.seconds += 86'400 * 3.7;
    transcript.clear();
    mouse.simulateMouseUp(somewhere);
    EXPECT_EQ(taken(), "up, print ::: Mouse Up 1");
}

TEST_F(MouseSimulateTest, ClockSetBackCountsAsQuick)
{
    EXPECT_EQ(secondRelease(-3'600'000, somewhere), doubleClick("0.0"));
}

// The distance

TEST_F(MouseSimulateTest, DistanceIsPrintedInTheFewestDecimalsOfASinglePrecisionNumber)
{
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 1, 3)), doubleClick("3.1622777"));
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 0.25, 0)), doubleClick("0.25"));
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 100'000, 0)), "print ::: Double Click distance 100000.0");
    EXPECT_EQ(
        secondRelease(10, movedBy(somewhere, 0, -16'777'215)), "print ::: Double Click distance 16777215.0");
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 16'777'216, 0)),
        "print ::: Double Click distance 1.6777216e+07");
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 0, -1e20)), "print ::: Double Click distance 1e+20");
}

TEST_F(MouseSimulateTest, DistanceBelowATenThousandthIsPrintedWithAnExponent)
{
    mouse.simulateMouseUp({0, 0});
    transcript.clear();
    mouse.simulateMouseUp({0, 1e-4F});
    EXPECT_EQ(taken(), doubleClick("0.0001"));
    mouse.simulateMouseUp({0, 0});
    transcript.clear();
    mouse.simulateMouseUp({0, std::nextafter(1e-4F, 0.0F)});
    EXPECT_EQ(taken(), doubleClick("9.999999e-05"));
}

TEST_F(MouseSimulateTest, DistanceIsTakenInSinglePrecision)
{
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 50.000001, 0)), doubleClick("50.0"));
}

TEST_F(MouseSimulateTest, QuickSecondReleaseAtTheNextDistanceAbove50PostsNothing)
{
    const double above50 = std::nextafter(50.0F, 51.0F);
    EXPECT_EQ(secondRelease(10, movedBy(somewhere, 0, above50)), "print ::: Double Click distance 50.000004");
}

TEST_F(MouseSimulateTest, DifferencesAreTakenInDoublePrecision)
{
    mouse.simulateMouseUp({16'777'217, 0.25});
    transcript.clear();
    mouse.simulateMouseUp({16'777'267, 0.25});
    EXPECT_EQ(taken(), doubleClick("50.0"));
}

TEST_F(MouseSimulateTest, DistanceBeyondAFloatOrWithoutAValueIsNoDoubleClick)
{
    EXPECT_EQ(secondRelease(10, {1e300, 0}), "print ::: Double Click distance inf");
    EXPECT_EQ(secondRelease(10, {notANumber, 0}).find("down"), std::string::npos);
}

// The two clicks that nothing calls

TEST_F(MouseSimulateTest, SingleClickWaits100MillisecondsBetweenPressAndRelease)
{
    mouse.simulateSingleClick(somewhere);
    EXPECT_EQ(taken(), "down, pause 100000us, up");
    EXPECT_EQ(lastPoint(), somewhere);
    EXPECT_EQ(poster.posted.front().at, somewhere);
}

TEST_F(MouseSimulateTest, RightClickIsAClickUnderKey56WithTheControlFlag)
{
    mouse.simulateRightClick(somewhere);
    EXPECT_EQ(taken(), "key56down+control, pause 50000us, down, up, key56up");
    EXPECT_EQ(lastPoint(), somewhere);
    EXPECT_EQ(poster.posted.front().at, somewhere);
    EXPECT_EQ(mouse.rightClickCount(), 0);
}

TEST_F(MouseSimulateTest, RightClickGoesOnWithoutKeyEventsThatCannotBeMade)
{
    poster.canMakeKeyEvents = false;
    mouse.simulateRightClick(somewhere);
    EXPECT_EQ(taken(), "pause 50000us, down, up");
}

// Overriding

TEST_F(MouseSimulateTest, EveryActionCanBeOverridden)
{
    class Recording : public MouseSimulate {
    public:
        using MouseSimulate::MouseSimulate;
        void simulateMouseDown(Point) override { words.add("down"); }
        void simulateMouseUp(Point at) override
        {
            words.add("up");
            MouseSimulate::simulateMouseUp(at);
        }
        void simulateMouseDrag(Point) override { words.add("drag"); }
        void simulateSingleClick(Point) override { words.add("single"); }
        void simulateRightClick(Point) override { words.add("right"); }
        void simulateDoubleClick(Point) override { words.add("double"); }
        void initiateMouseEvent(
            std::string_view event, std::string_view x, std::string_view y, std::string_view time) override
        {
            words.add("event");
            MouseSimulate::initiateMouseEvent(event, x, y, time);
        }

        Transcript words;
    };
    Recording recording(clock, screen, pause, poster, console);
    for (const char* event : {"DOWN", "MOVE", "UP", "UP"})
        recording.initiateMouseEventWithEvent(event, "100", "200", "");
    EXPECT_EQ(recording.words.take(" "), "event down event drag event up event up double");
    MouseSimulate& base = recording;
    base.simulateSingleClick({1, 2});
    base.simulateRightClick({1, 2});
    EXPECT_EQ(recording.words.take(" "), "single right");
}

// Dates

TEST(MillisecondsTest, HalvesAreRoundedAwayFromZero)
{
    EXPECT_EQ(toMilliseconds(0.0625), 63);
    EXPECT_EQ(toMilliseconds(-0.0625), -63);
    EXPECT_EQ(toMilliseconds(1'712'345'678.3214), 1'712'345'678'321);
    EXPECT_EQ(toMilliseconds(1'712'345'678.3216), 1'712'345'678'322);
}

TEST(MillisecondsTest, LastValuesThatFit64BitsAreTaken)
{
    EXPECT_EQ(toMilliseconds(9'223'372'036'854'774.0), 9'223'372'036'854'773'760);
    EXPECT_EQ(toMilliseconds(-9'223'372'036'854'776.0), std::numeric_limits<std::int64_t>::min());
}

TEST(MillisecondsDeathTest, ValuesOutOf64BitsAreFatal)
{
    const char* message = "Fatal error: The time is out of range.";
    EXPECT_DEATH(toMilliseconds(9'223'372'036'854'776.0), message);
    EXPECT_DEATH(toMilliseconds(-9'223'372'036'854'778.0), message);
    EXPECT_DEATH(toMilliseconds(infinity), message);
    EXPECT_DEATH(toMilliseconds(-infinity), message);
    EXPECT_DEATH(toMilliseconds(notANumber), message);
}

TEST(MillisecondsTest, DateFromMillisecondsDropsThePartBelowASecond)
{
    EXPECT_EQ(dateFromMilliseconds(1'712'345'678'999), 1'712'345'678.0);
    EXPECT_EQ(dateFromMilliseconds(999), 0.0);
    EXPECT_EQ(dateFromMilliseconds(-1'999), -1.0);
}

// What ends the process

TEST_F(MouseSimulateDeathTest, NoMainScreenIsFatalForAnyWord)
{
    screen.size.reset();
    EXPECT_DEATH(touch("DOWN", "100", "200"), "Fatal error: There is no main screen.");
    EXPECT_DEATH(touch("nothing", "100", "200"), "Fatal error: There is no main screen.");
    touch("DOWN", "abc", "200");
}

TEST_F(MouseSimulateDeathTest, MouseEventThatCannotBeMadeIsFatal)
{
    const char* message = "Fatal error: A mouse event cannot be made.";
    mouse.simulateMouseUp(somewhere);
    poster.canMakeMouseEvents = false;
    EXPECT_DEATH(mouse.simulateMouseDown(somewhere), message);
    EXPECT_DEATH(mouse.simulateMouseDrag(somewhere), message);
    EXPECT_DEATH(mouse.simulateMouseUp(movedBy(somewhere, 400, 0)), message);
    EXPECT_DEATH(mouse.simulateSingleClick(somewhere), message);
    EXPECT_DEATH(mouse.simulateRightClick(somewhere), message);
    EXPECT_DEATH(mouse.simulateDoubleClick(somewhere), message);
}

TEST_F(MouseSimulateDeathTest, TimeOutOfRangeIsFatalForPressesAndReleases)
{
    const char* message = "Fatal error: The time is out of range.";
    clock.seconds = 1e16;
    EXPECT_DEATH(mouse.simulateMouseDown(somewhere), message);
    EXPECT_DEATH(mouse.simulateMouseUp(somewhere), message);
    clock.seconds = 0;
    mouse.simulateMouseUp(somewhere);
    clock.seconds = notANumber;
    EXPECT_DEATH(mouse.simulateMouseUp(somewhere), message);
    mouse.simulateMouseDrag(somewhere);
}

TEST_F(MouseSimulateDeathTest, IntervalOutOf64BitsIsFatal)
{
    clock.seconds = -9e15;
    mouse.simulateMouseUp(somewhere);
    clock.seconds = 9e15;
    EXPECT_DEATH(
        mouse.simulateMouseUp(somewhere), "Fatal error: The time between two releases is out of range.");
}

} // namespace companion::testing
