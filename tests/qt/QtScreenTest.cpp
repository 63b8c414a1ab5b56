#include "tests/support/ChildProcess.h"
#include "tests/support/XvfbServer.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace companion::testing {
namespace {

class QtScreenTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        for (const std::string program : {"Xvfb", "xrandr"}) {
            if (!isInstalled(program))
                GTEST_SKIP() << program << " is not installed";
        }
    }

    /// One X screen, seen as the monitors L and R beside each other, L being the primary one.
    static void splitInTwo(const XvfbServer& server)
    {
        setMonitor(server, {"L", "640/170x800/210+0+0", "screen"});
        setMonitor(server, {"R", "640/170x800/210+640+0", "none"});
    }

    static void setMonitor(const XvfbServer& server, const std::vector<std::string>& monitor)
    {
        std::vector<std::string> arguments{"xrandr", "--setmonitor"};
        arguments.insert(arguments.end(), monitor.begin(), monitor.end());
        ChildProcess xrandr(arguments, {{"DISPLAY", server.display()}});
        ASSERT_EQ(xrandr.waitForExit(), 0) << xrandr.output();
    }

    static std::string probe(
        const XvfbServer& server, const std::string& screenName = "", const std::string& scale = "1")
    {
        ChildProcess program({SCREEN_PROBE, screenName},
            {{"DISPLAY", server.display()}, {"QT_QPA_PLATFORM", "xcb"}, {"QT_SCALE_FACTOR", scale}});
        EXPECT_EQ(program.waitForExit(), 0);
        const std::string& output = program.output();
        return output.substr(
            std::min(output.find("size "), output.size())); // Qt may have warnings to say before
    }
};

TEST_F(QtScreenTest, OneScreenOf1366By768StartsAtTheRootsOrigin)
{
    const XvfbServer server("1366x768");
    EXPECT_EQ(probe(server), "size 1366x768 origin 0,0 scale 1 mapped 1366x768\n");
}

TEST_F(QtScreenTest, AScaleOfTwoHalvesTheSizeInPoints)
{
    const XvfbServer server("1366x768");
    EXPECT_EQ(probe(server, "", "2"), "size 683x384 origin 0,0 scale 2 mapped 683x384\n");
}

TEST_F(QtScreenTest, OfTwoMonitorsThePrimaryOneIsTheMainScreen)
{
    const XvfbServer server("1280x800");
    splitInTwo(server);
    EXPECT_EQ(probe(server), "size 640x800 origin 0,0 scale 1 mapped 640x800\n");
}

TEST_F(QtScreenTest, AScreenIsPickedByItsName)
{
    const XvfbServer server("1280x800");
    splitInTwo(server);
    EXPECT_EQ(probe(server, "R"), "size 640x800 origin 640,0 scale 1 mapped 640x800\n");
}

TEST_F(QtScreenTest, TheOriginOfAPickedScreenStaysInRootPixelsAtAScaleOfTwo)
{
    const XvfbServer server("1280x800");
    splitInTwo(server);
    EXPECT_EQ(probe(server, "R", "2"), "size 320x400 origin 640,0 scale 2 mapped 320x400\n");
}

TEST_F(QtScreenTest, ANameThatNoScreenHasMeansThePrimaryOne)
{
    const XvfbServer server("1280x800");
    splitInTwo(server);
    EXPECT_EQ(probe(server, "HDMI-9"), "size 640x800 origin 0,0 scale 1 mapped 640x800\n");
}

} // namespace
} // namespace companion::testing
