// Two monitors on one X server, as the toolkit sees them at several scales.
#include "tests/x11/PosterTest.h"

namespace companion::testing {
namespace {

struct Monitor {
    std::string name;
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    std::string pixel(int column, int row) const
    {
        return std::to_string(x + column) + "," + std::to_string(y + row);
    }
};

void xrandr(const std::string& display, std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "xrandr");
    ChildProcess program(arguments, {{"DISPLAY", display}});
    ASSERT_EQ(program.waitForExit(), 0) << program.output();
}

void setMonitor(const std::string& display, const Monitor& monitor, const char* output)
{
    const auto length = [](int pixels) { return std::to_string(pixels) + "/" + std::to_string(pixels / 4); };
    const std::string geometry = length(monitor.width) + "x" + length(monitor.height) + "+"
        + std::to_string(monitor.x) + "+" + std::to_string(monitor.y);
    xrandr(display, {"--setmonitor", monitor.name, geometry, output});
}

void expectEdgesBelongTo(const std::string& display, const Monitor& monitor, const std::string& scale)
{
    XRecorder recorder(display);
    ChildProcess program({EDGE_PROGRAM, monitor.name},
        {{"DISPLAY", display}, {"QT_QPA_PLATFORM", "xcb"}, {"QT_SCALE_FACTOR", scale},
            {"QT_SCALE_FACTOR_ROUNDING_POLICY", "PassThrough"}});
    ASSERT_EQ(program.waitForExit(), 0) << program.output();
    const int right = monitor.width - 1;
    const int bottom = monitor.height - 1;
    const std::string corners =
        monitor.pixel(0, 0) + " " + monitor.pixel(right, 0) + " " + monitor.pixel(0, bottom) + " ";
    const std::string requested = recorder.takeRequestedMotions();
    EXPECT_THAT(requested, ::testing::StartsWith(corners));
    EXPECT_THAT(requested,
        ::testing::EndsWith(
            " " + monitor.pixel(right, bottom) + " " + monitor.pixel(2 * monitor.width, 2 * monitor.height)));
    // A finger that is 0.0008 of the screen before its end is on the last pixel but one, or two.
    int x = 0;
    int y = 0;
    ASSERT_EQ(std::sscanf(requested.c_str() + corners.size(), "%d,%d", &x, &y), 2) << requested;
    EXPECT_THAT(x - monitor.x, ::testing::AllOf(::testing::Ge(right - 2), ::testing::Le(right))) << requested;
    EXPECT_THAT(y - monitor.y, ::testing::AllOf(::testing::Ge(bottom - 2), ::testing::Le(bottom)))
        << requested;
}

} // namespace

template <typename Base> class WithXrandr : public Base {
protected:
    void SetUp() override
    {
        if (!isInstalled("xrandr"))
            GTEST_SKIP() << "xrandr (package x11-xserver-utils) is missing";
    }
};

class XTestMonitorsTest : public WithXrandr<::testing::TestWithParam<std::pair<Monitor, Monitor>>> { };
class XTestMonitorTest : public WithXrandr<::testing::Test> { };

// 641 pixels are 320.5 points at scale 2, and 1280 are 853.3 at scale 1.5.
TEST_P(XTestMonitorsTest, TheEdgesOfEitherOfTwoMonitorsBelongToItAtScales1And1AndAHalfAnd2)
{
    const auto& [first, second] = GetParam();
    XvfbServer xvfb("1921x1281");
    setMonitor(xvfb.display(), first, "screen");
    setMonitor(xvfb.display(), second, "none");
    for (const Monitor& monitor : {first, second}) {
        for (const char* scale : {"1", "1.5", "2"}) {
            SCOPED_TRACE(monitor.name + " at scale " + scale);
            expectEdgesBelongTo(xvfb.display(), monitor, scale);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(LeftAndRight, XTestMonitorsTest,
    ::testing::Values(std::pair(Monitor{"LEFT", 0, 0, 641, 1281}, Monitor{"RIGHT", 641, 0, 1280, 1281})));
INSTANTIATE_TEST_SUITE_P(UpperAndLower, XTestMonitorsTest,
    ::testing::Values(std::pair(Monitor{"UPPER", 0, 0, 1921, 641}, Monitor{"LOWER", 0, 641, 1921, 640})));

// 641 pixels are as many points as 642, so the toolkit's place of the screen stays as it was.
TEST_F(XTestMonitorTest, OneThatGrewByAPixelIsNoticedWhenTouchesBegin)
{
    XvfbServer xvfb("1366x768");
    const ScreenMapping mapping{0, 0, 2, {321, 384}};
    const auto poster = openPoster(xvfb.display(), [&] { return mapping; });
    XRecorder recorder(xvfb.display());
    for (const int width : {641, 642}) {
        setMonitor(xvfb.display(), {"ONLY", 0, 0, width, 768}, "screen");
        poster->touchesBegin();
        poster->post(MouseEvent{leftDragged, {321, 0}});
        poster->sync();
        EXPECT_EQ(recorder.takeText(), "motion " + std::to_string(width - 1) + ",0");
        xrandr(xvfb.display(), {"--delmonitor", "ONLY"});
    }
}

} // namespace companion::testing
