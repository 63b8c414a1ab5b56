// What programs that count presses by themselves make of taps and of the double clicks asked for.
#include "tests/support/XClient.h"
#include "tests/x11/PosterTest.h"

namespace companion::testing {

using XTestClickCountingTest = PosterTest;

// The double click comes at the release of the second tap, whose press is still held.

TEST_F(XTestClickCountingTest, TapsThatProgramsCountedAsADoubleClickGetNoFurtherPress)
{
    tap({3, 4});
    now += 399ms;
    post(leftDown, {8, 4});
    now += 600ms;
    doubleClick({8, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 motion 8,4 press1 8,4 release1 8,4");
}

TEST_F(XTestClickCountingTest, TapsTooFarApartInTimeGetOneFurtherPress)
{
    tap({3, 4});
    now += 400ms;
    post(leftDown, {3, 4});
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ALongerDoubleClickTimeThatIsSetWhileItRunsHoldsForTheNextTaps)
{
    rules.interval = 900ms;
    tap({3, 4});
    now += 700ms;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, TapsTooFarApartInSpaceGetOneFurtherPress)
{
    tap({3, 4});
    now += 150ms;
    post(leftDown, {33, 4});
    now += 50ms;
    doubleClick({33, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 motion 33,4 press1 33,4 release1 33,4 press1 33,4 release1 33,4");
}

TEST_F(XTestClickCountingTest, ASecondTapHeldFor400MillisecondsGetsTwoFurtherPresses)
{
    tap({3, 4});
    now += 400ms;
    post(leftDown, {3, 4});
    now += 400ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(),
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4 "
        "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ASecondTapReleased6PixelsFromItsPressGetsTwoFurtherPressesThere)
{
    tap({3, 4});
    now += 150ms;
    post(leftDown, {33, 4});
    now += 50ms;
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
    now += 150ms;
    post(leftDown, {55, 60});
    doubleClick({55, 60});
    EXPECT_EQ(recorded(),
        "motion 100,120 press1 100,120 release1 100,120 motion 110,120 press1 110,120 release1 110,120");
}

TEST_F(XTestClickCountingTest, AThirdQuickTapIsPostedAndASynthesisedDoubleClickUponItIsNot)
{
    for (int i = 0; i < 3; ++i) {
        tap({3, 4});
        now += 150ms;
    }
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
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickWithNothingHeldSoonAfterADoubleClickIsLeftOut)
{
    doubleClick({3, 4});
    now += 399ms;
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

TEST_F(XTestClickCountingTest, ADoubleClickAfterOneThatWasShortenedIsWholeAgain)
{
    tap({3, 4});
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    recorded();
    now += 5s;
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
    now += 150ms;
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
    now += 150ms;
    post(leftDown, {3, 4});
    doubleClick({3, 4});
    EXPECT_EQ(recorded(), "press1 3,4 release1 3,4 press1 3,4 release1 3,4");
}

} // namespace companion::testing
