// What programs that count presses by themselves make of taps and of the double clicks asked for.
#include "tests/support/XClient.h"
#include "tests/x11/PosterTest.h"

namespace companion::testing {

/// All presses are counted as one series, however long they take, until the rules are changed.
class XTestClickCountingTest : public PosterTest {
protected:
    XTestClickCountingTest() { rules.interval = 1h; }

    /// The last press was at `at`; it is counted by the rules of now.
    void count(Point at) { post(leftDragged, at); }
};

// The double click comes at the release of the second tap, whose press is still held.

TEST_F(XTestClickCountingTest, TapsThatProgramsCountedAsADoubleClickGetNoFurtherPress)
{
    tap({3, 4});
    post(leftDown, {8, 4});
    doubleClick({8, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 motion 8,4 press1 8,4 release1 8,4");
}

TEST_F(XTestClickCountingTest, TapsTooFarApartInTimeGetOneFurtherPress)
{
    rules.interval = 0ms;
    tap({3, 4});
    post(leftDown, {3, 4});
    count({3, 4});
    rules.interval = 1h;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ALongerDoubleClickTimeThatIsSetWhileItRunsHoldsForTheNextTaps)
{
    rules.interval = 0ms;
    tap({3, 4});
    rules.interval = 1h;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, TapsTooFarApartInSpaceGetOneFurtherPress)
{
    tap({3, 4});
    post(leftDown, {33, 4});
    doubleClick({33, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 motion 33,4 press1 33,4 release1 33,4 press1 33,4 release1 33,4");
}

TEST_F(XTestClickCountingTest, ASlowSecondTapThatIsHeldForTooLongGetsTwoFurtherPresses)
{
    tap({3, 4});
    post(leftDown, {3, 4});
    rules.interval = 0ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4 "
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ASecondTapReleased6PixelsFromItsPressGetsTwoFurtherPressesThere)
{
    tap({3, 4});
    post(leftDown, {33, 4});
    post(leftDragged, {39, 4});
    doubleClick({39, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 motion 33,4 press1 33,4 motion 39,4 release1 39,4 "
        "press1 39,4 release1 39,4 press1 39,4 release1 39,4");
}

TEST_F(XTestClickCountingTest, AtScale2TapsTenPixelsApartAreCountedAsADoubleClick)
{
    mapping->scale = 2;
    tap({50, 60});
    post(leftDown, {55, 60});
    doubleClick({55, 60});
    EXPECT_EQ(recorded(),
        "motion 100,120 press1 100,120 release1 100,120 motion 110,120 press1 110,120 release1 110,120");
}

TEST_F(XTestClickCountingTest, AThirdQuickTapIsPostedAndASynthesisedDoubleClickUponItIsNot)
{
    for (int i = 0; i < 3; ++i)
        tap({3, 4});
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickWithNothingHeldOrCountedIsPostedWhole)
{
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickWithNothingHeldSoonAfterATapGetsOnePress)
{
    tap({3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickWithNothingHeldSoonAfterADoubleClickGetsOnePress)
{
    doubleClick({3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickAfterOneThatWasShortenedIsWholeAgain)
{
    tap({3, 4});
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    recorded();
    rules.interval = 0ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ASecondTapOnWhatLaysBelowAWindowThatTheFirstTapClosedGetsOneFurtherPress)
{
    XClient program(server().display());
    const unsigned long window = program.openWindow(0, 0, 50, 50);
    tap({3, 4});
    poster->sync();
    program.closeWindow(window);
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ASecondTapAfterAClickOfTheRealMouseGetsOneFurtherPress)
{
    XClient program(server().display());
    tap({3, 4});
    poster->sync();
    if (!program.clickWithMouse())
        GTEST_SKIP() << "this X server has no mouse of its own";
    recorder.take();
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ASecondTapAfterAClickByXTestOfAnotherProgramGetsOneFurtherPress)
{
    std::string whyNot;
    const auto other = XTestConnection::open(server().display(), whyNot);
    tap({3, 4});
    poster->sync();
    other->setButtonDown(1, true);
    other->setButtonDown(1, false);
    other->sync();
    recorder.take();
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

} // namespace companion::testing
