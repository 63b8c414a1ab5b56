#include "dashboard/TouchArrival.h"

#include "dashboard/testing/DashboardTest.h"

namespace companion::testing {

namespace {

using namespace std::chrono_literals;

class TouchArrivalTest : public DashboardTest {
protected:
    void startCasting()
    {
        load();
        pickRoom204();
        dashboard->castButtonClicked();
    }

    void receive(std::string_view datagram, const std::string& host)
    {
        EXPECT_TRUE(sockets.deliver(datagram, {host, 50000}));
    }

    std::string states() { return view.touchStates.take("; "); }
};

} // namespace

TEST_F(TouchArrivalTest, PairingAloneExpectsNoTouches)
{
    load();
    pickRoom204();
    EXPECT_EQ(states(), "");
}

TEST_F(TouchArrivalTest, CastingAndTheCableModeWaitForTheFirstTouch)
{
    startCasting();
    EXPECT_EQ(states(), "awaited");
    dashboard->castButtonClicked();
    EXPECT_EQ(states(), "not expected");
    clickSwitch();
    EXPECT_EQ(states(), "awaited");
    clickSwitch();
    EXPECT_EQ(states(), "not expected");
}

TEST_F(TouchArrivalTest, TheHintComesAfter15SecondsAndNotJustBefore)
{
    startCasting();
    queue.advance(14'999ms);
    EXPECT_EQ(states(), "awaited");
    queue.advance(1ms);
    EXPECT_EQ(states(), "missing");
}

TEST_F(TouchArrivalTest, TheFirstTouchOfThePanelIsToldOnceAndNoHintFollows)
{
    startCasting();
    receive("DOWN,1,2,3;", "10.0.2.15");
    receive("UP,1,2,3;", "10.0.2.99");
    queue.advance(20s);
    EXPECT_EQ(states(), "awaited; works");
}

TEST_F(TouchArrivalTest, ATouchAfterTheHintTakesItBack)
{
    startCasting();
    queue.advance(15s);
    receive("DOWN,1,2,3;", "10.0.2.15");
    EXPECT_EQ(states(), "awaited; missing; works");
}

TEST_F(TouchArrivalTest, AFirstTouchFromAnotherAddressIsToldWithIt)
{
    startCasting();
    receive("DOWN,1,2,3;", "10.0.2.99");
    EXPECT_EQ(states(), "awaited; works from elsewhere 10.0.2.99");
}

TEST_F(TouchArrivalTest, ARecordThatIsNoTouchProvesNothing)
{
    startCasting();
    receive("DOWN", "10.0.2.15");
    EXPECT_EQ(states(), "awaited");
}

TEST_F(TouchArrivalTest, DroppedTouchesAreToldOnceUntilThePanelsOwnArrive)
{
    touchSource = TouchSource::panel;
    startCasting();
    receive("DOWN,1,2,3;", "10.0.2.99");
    receive("MOVE,1,2,3;", "10.0.2.99");
    queue.advance(20s);
    EXPECT_EQ(states(), "awaited; ignored 10.0.2.99");
    receive("DOWN,1,2,3;", "10.0.2.15");
    receive("MOVE,1,2,3;", "10.0.2.99");
    EXPECT_EQ(states(), "works");
}

TEST_F(TouchArrivalTest, AHintThatIsDueDoesNotOutliveItsSession)
{
    startCasting();
    queue.advance(10s);
    dashboard->castButtonClicked();
    dashboard->castButtonClicked();
    queue.advance(10s);
    EXPECT_EQ(states(), "awaited; not expected; awaited");
    dashboard->castButtonClicked();
    queue.advance(20s);
    EXPECT_EQ(states(), "not expected");
}

TEST_F(TouchArrivalTest, AHintThatIsDueDoesNotNeedTheDashboard)
{
    load();
    view.wirelessTouchSwitch().setChecked(true);
    dashboard->initiateTouchBack();
    dashboard.reset();
    queue.advance(20s);
    EXPECT_EQ(states(), "awaited");
}

TEST_F(TouchArrivalTest, AfterTheSwitchIsTurnedOffTouchesThatStillCountAreNotTold)
{
    load();
    pickRoom204();
    clickSwitch();
    clickSwitch();
    receive("MOVE,1,2,3;", "10.0.2.15");
    EXPECT_EQ(states(), "awaited; not expected");
}

TEST_F(TouchArrivalTest, TheEndOfASessionByThePanelIsTold)
{
    startCasting();
    queue.advance(4s);
    answer(0, "CAST_OFF");
    queue.runPending();
    EXPECT_EQ(states(), "awaited; not expected");
}

TEST_F(TouchArrivalTest, APortThatCannotBeOpenedIsToldWithoutAHintLater)
{
    sockets.bindError = "Address already in use";
    startCasting();
    queue.advance(20s);
    EXPECT_EQ(states(), "no port");
    sockets.bindError.reset();
    dashboard->initiateTouchBack();
    EXPECT_EQ(states(), "awaited");
}

} // namespace companion::testing
