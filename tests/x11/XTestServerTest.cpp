// Servers that go, come back, or map their buttons.
#include "platform/testing/FakeLog.h"
#include "tests/x11/PosterTest.h"

#include <thread>

namespace companion::testing {

TEST(XTestServerLogTest, TheServersEndIsToldOnce)
{
    XvfbServer xvfb;
    Transcript transcript;
    FakeSystemLog log(transcript);
    const auto poster = openPoster(xvfb.display(), [] { return ScreenMapping{}; });
    poster->setLog(log);
    poster->sync();
    EXPECT_EQ(transcript.take(), "");
    xvfb.stop();
    for (int i = 0; i < 3; ++i) {
        poster->post(MouseEvent{leftDown, {100, 200}});
        poster->sync();
    }
    EXPECT_EQ(transcript.take(),
        "log The connection to the X display \"" + xvfb.display()
            + "\" is lost: touches move nothing any more");
}

TEST(XTestServerLogTest, ALostServerIsConnectedToAgainOnceASecondAndThatIsLogged)
{
    XvfbServer xvfb;
    Transcript transcript;
    FakeSystemLog log(transcript);
    ClickSeries::TimePoint now{71h};
    const auto poster = openPoster(
        xvfb.display(), [] { return ScreenMapping{}; }, [&] { return now; });
    poster->setLog(log);
    xvfb.stop();
    poster->post(MouseEvent{leftDown, {100, 200}});
    poster->post(MouseEvent{leftUp, {100, 200}}); // tries to connect, in vain
    transcript.take();

    xvfb.startAgain();
    XRecorder recorder(xvfb.display());
    now += 999ms;
    poster->post(MouseEvent{leftDown, {100, 200}});
    EXPECT_EQ(transcript.take(), "");
    now += 1ms;
    poster->post(MouseEvent{leftUp, {100, 200}});
    poster->post(MouseEvent{leftDown, {300, 200}});
    poster->sync();
    EXPECT_EQ(transcript.take(), "log The connection to the X display \"" + xvfb.display() + "\" is back");
    EXPECT_EQ(recorder.takeText(), "motion 100,200 motion 300,200 press1 300,200");
}

TEST(XTestServerLossTest, TheFirstTapAfterALossThatNobodyHasNoticedArrives)
{
    XvfbServer xvfb;
    const auto poster = openPoster(xvfb.display(), [] { return ScreenMapping{}; });
    xvfb.stop();
    xvfb.startAgain();
    XRecorder recorder(xvfb.display());
    poster->post(MouseEvent{leftDown, {100, 200}});
    poster->post(MouseEvent{leftUp, {100, 200}});
    poster->sync();
    EXPECT_EQ(recorder.takeText(), "motion 100,200 press1 100,200 release1 100,200");
}

/// A server whose physical buttons are mapped as a left-handed person wants them. Seen is what programs are told that is
/// held: what is recorded is the physical button.
class XTestButtonMappingTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!isInstalled("xmodmap"))
            GTEST_SKIP() << "xmodmap (package x11-xserver-utils) is missing";
        std::string whyNot;
        observer = XTestConnection::open(xvfb.display(), whyNot);
        ASSERT_TRUE(observer) << whyNot;
    }

    void map(const std::string& buttons)
    {
        ChildProcess program({"xmodmap", "-e", "pointer = " + buttons}, {{"DISPLAY", xvfb.display()}});
        ASSERT_EQ(program.waitForExit(), 0) << program.output();
    }

    void open()
    {
        poster = openPoster(xvfb.display(), [] { return ScreenMapping{}; });
    }

    void post(MouseEventType type)
    {
        poster->post(MouseEvent{type, {5, 7}});
        poster->sync();
    }

    bool isLeftButtonDown() { return observer->lookAt({}).value().isLeftButtonDown; }

    void expectLeftClick()
    {
        post(leftDown);
        EXPECT_TRUE(isLeftButtonDown());
        post(leftUp);
        EXPECT_FALSE(isLeftButtonDown());
    }

    XvfbServer xvfb;
    std::unique_ptr<XTestConnection> observer;
    std::unique_ptr<XTestMouseEventPoster> poster;
};

TEST_F(XTestButtonMappingTest, WithButtons1And3SwappedATapIsStillALeftClick)
{
    map("3 2 1");
    open();
    expectLeftClick();
}

TEST_F(XTestButtonMappingTest, ButtonsThatAreSwappedWhileItRunsAreFollowedFromTheNextPressOn)
{
    open();
    expectLeftClick();
    map("3 2 1");
    expectLeftClick();
    map("2 1 3");
    expectLeftClick();
    map("1 2 3");
    expectLeftClick();
}

TEST_F(XTestButtonMappingTest, AnotherThreadReleasesThePhysicalButtonThatWasPressed)
{
    map("2 1 3");
    open();
    post(leftDown);
    ASSERT_TRUE(isLeftButtonDown());
    std::thread([this] { poster->releaseHeldButton(); }).join();
    EXPECT_FALSE(isLeftButtonDown());
}

TEST_F(XTestButtonMappingTest, DestructionReleasesThePhysicalButtonThatWasPressed)
{
    map("3 2 1");
    open();
    post(leftDown);
    ASSERT_TRUE(isLeftButtonDown());
    poster.reset();
    EXPECT_FALSE(isLeftButtonDown());
}

TEST_F(XTestButtonMappingTest, APressFindsTheLeftButtonHeldByAProgramThatDiedAndHealsIt)
{
    map("3 2 1");
    observer->setButtonDown(3, true);
    ASSERT_TRUE(isLeftButtonDown());
    open();
    expectLeftClick();
}

TEST_F(XTestButtonMappingTest, WhereNoButtonIsTheLeftOneTheFirstIsPressed)
{
    map("3 2 0");
    open();
    XRecorder recorder(xvfb.display());
    post(leftDown);
    post(leftUp);
    EXPECT_EQ(recorder.takeText(), "motion 5,7 press1 5,7 release1 5,7");
}

TEST(XTestServerLossTest, AServerThatDiesMakesEveryCallANoOperationAndEndsNothing)
{
    auto xvfb = std::make_unique<XvfbServer>();
    auto poster = openPoster(xvfb->display(), [] { return ScreenMapping{}; });
    poster->post(MouseEvent{leftDown, {5, 7}});
    xvfb.reset();
    for (int i = 0; i < 3; ++i) {
        poster->post(MouseEvent{leftDragged, {double(i), 7}});
        poster->post(MouseEvent{leftUp, {5, 7}});
        poster->post(MouseEvent{leftDown, {5, 7}});
        poster->flush();
        poster->sync();
    }
    EXPECT_FALSE(poster->makeKeyEvent(56, true));
    poster->releaseHeldButton();
    poster.reset();
}

} // namespace companion::testing
