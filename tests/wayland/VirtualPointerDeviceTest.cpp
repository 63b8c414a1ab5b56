#include "platform/wayland/VirtualPointerDevice.h"

#include "platform/testing/FakeLog.h"
#include "tests/qt/EventLoop.h"
#include "tests/support/ChildProcess.h"

#include <csignal>
#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QTemporaryDir>

namespace companion::testing {

namespace {

std::size_t countOf(const std::string& text, const std::string& part)
{
    std::size_t count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++count;
    return count;
}

} // namespace

class VirtualPointerDeviceTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        if (m_compositor)
            m_compositor->sendSignal(SIGCONT);
    }

    void startCompositor(const std::string& version = "2")
    {
        m_compositor = std::make_unique<ChildProcess>(
            std::vector<std::string>{STAND_IN_COMPOSITOR, "wayland-7", version, "DP-1", "HDMI-A-2"},
            std::map<std::string, std::string>{{"XDG_RUNTIME_DIR", m_folder.path().toStdString()}});
        ASSERT_TRUE(m_compositor->waitForOutput("ready"));
    }

    std::unique_ptr<VirtualPointerDevice> open()
    {
        return VirtualPointerDevice::open(
            m_folder.filePath("wayland-7").toStdString(), [this] { return mapping; },
            [this] { return screenName; }, m_log, whyNot);
    }

    /// While events are handled.
    bool compositorGets(const std::string& text)
    {
        return spinUntil([&] { return countOf(m_compositor->output(), text) > 0; });
    }

    std::string log() { return m_transcript.take(" "); }

    std::optional<ScreenMapping> mapping = ScreenMapping{0, 0, 1, {1366, 768}};
    std::string screenName = "DP-1";
    std::string whyNot;
    std::unique_ptr<ChildProcess> m_compositor;

private:
    QTemporaryDir m_folder;
    Transcript m_transcript;
    FakeSystemLog m_log{m_transcript};
};

TEST_F(VirtualPointerDeviceTest, ItsPointerIsOnTheOutputThatHasTheScreensName)
{
    startCompositor();
    screenName = "HDMI-A-2";
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    EXPECT_TRUE(compositorGets("pointer HDMI-A-2\n"));
}

TEST_F(VirtualPointerDeviceTest, FollowsTheMainScreenToAnotherOutput)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    ASSERT_TRUE(compositorGets("pointer DP-1\n"));
    screenName = "HDMI-A-2";
    mapping = ScreenMapping{1366, 0, 1, {1024, 600}};
    device->moveTo({1023, 599});
    device->flush();
    EXPECT_TRUE(compositorGets("pointer HDMI-A-2\nmotion 261888 153344 262144 153600\n"));
}

TEST_F(VirtualPointerDeviceTest, ReleasesAtItsStartWhatAnEarlierRunLeftHeld)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    EXPECT_TRUE(compositorGets("release\n"));
}

TEST_F(VirtualPointerDeviceTest, WhatIsPostedBeforeItsEndArrives)
{
    startCompositor();
    auto device = open();
    ASSERT_TRUE(device) << whyNot;
    device->setLeftButtonDown(true);
    device->setLeftButtonDown(false);
    device.reset();
    EXPECT_TRUE(m_compositor->waitForOutput("press\nrelease\n"));
}

TEST_F(VirtualPointerDeviceTest, ReleasesWhenTheProgramFailsWhileTheMainThreadIsStuck)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    device->setLeftButtonDown(true);
    device->releaseWhenProgramFails(); // no event is handled here
    EXPECT_TRUE(m_compositor->waitForOutput("press\npointer DP-1\nrelease\n")) << m_compositor->output();
}

TEST_F(VirtualPointerDeviceTest, ABurstOf10000MovesWaitsForACompositorThatHasStopped)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    ASSERT_TRUE(compositorGets("release\n"));
    m_compositor->sendSignal(SIGSTOP);
    const auto start = SteadyClock::now();
    device->setLeftButtonDown(true);
    for (int i = 0; i < 10'000; ++i) {
        device->moveTo({static_cast<double>(i % 1366), static_cast<double>(i / 1366)});
        device->flush();
    }
    device->setLeftButtonDown(false);
    EXPECT_LT(SteadyClock::now() - start, 5s);
    m_compositor->sendSignal(SIGCONT);
    ASSERT_TRUE(spinUntil([&] { return countOf(m_compositor->output(), "release\n") == 2; }, 60s));
    EXPECT_EQ(countOf(m_compositor->output(), "motion"), 10'000U);
    EXPECT_EQ(countOf(m_compositor->output(), "press\nmotion 0 0 "), 1U);
    EXPECT_EQ(log(), "");
}

TEST_F(VirtualPointerDeviceTest, ACompositorThatLeaves65536EventsUnreadIsGivenUp)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    m_compositor->sendSignal(SIGSTOP);
    for (int i = 0; i < 100'000 && device->area(); ++i)
        device->moveTo({static_cast<double>(i % 1366), 0});
    EXPECT_FALSE(device->area());
    EXPECT_EQ(log(),
        "log The connection to the Wayland compositor is lost (it does not read any more): touches move nothing any "
        "more");
}

TEST_F(VirtualPointerDeviceTest, ALostConnectionIsLoggedOnceAndOpenedAgain)
{
    startCompositor();
    const auto device = open();
    ASSERT_TRUE(device) << whyNot;
    m_compositor->sendSignal(SIGKILL);
    ASSERT_TRUE(m_compositor->waitForExit());
    ASSERT_TRUE(spinUntil([&] { return !device->area(); }));
    device->flush(); // which finds nobody to connect to
    EXPECT_EQ(countOf(log(), "is lost"), 1U);
    startCompositor();
    ASSERT_TRUE(spinUntil([&] {
        device->flush(); // as each touch does
        return device->area().has_value();
    }));
    EXPECT_EQ(log(), "log Connecting to the Wayland compositor again");
    device->moveTo({100, 50});
    device->flush();
    EXPECT_TRUE(compositorGets("motion 25600 12800 "));
}

TEST_F(VirtualPointerDeviceTest, ThereIsNoneWithoutACompositor)
{
    EXPECT_FALSE(open());
    EXPECT_EQ(whyNot.rfind("Cannot connect to a Wayland compositor at \"", 0), 0U) << whyNot;
}

TEST_F(VirtualPointerDeviceTest, APointerWithoutAnOutputOfItsOwnIsNone)
{
    startCompositor("1");
    EXPECT_FALSE(open());
    EXPECT_EQ(whyNot, "The Wayland compositor offers no virtual pointer");
}

TEST_F(VirtualPointerDeviceTest, ACompositorThatHasStoppedHoldsUpTheStartForASecond)
{
    startCompositor();
    m_compositor->sendSignal(SIGSTOP);
    EXPECT_FALSE(open());
    EXPECT_EQ(whyNot, "The Wayland compositor does not answer");
}

} // namespace companion::testing

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    const QCoreApplication application(argc, argv);
    return RUN_ALL_TESTS();
}
