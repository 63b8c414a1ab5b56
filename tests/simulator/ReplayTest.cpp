#include "tests/simulator/SimulatorProcess.h"
#include "tests/simulator/TouchListener.h"

#include <gmock/gmock.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <unistd.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

/// A file that is gone with the test.
class RecordingFile {
public:
    explicit RecordingFile(const std::string& content)
    {
        std::string pattern = (std::filesystem::temp_directory_path() / "recording-XXXXXX").string();
        close(mkstemp(pattern.data()));
        m_path = pattern;
        std::ofstream(m_path, std::ios::binary) << content;
    }
    ~RecordingFile() { std::filesystem::remove(m_path); }
    RecordingFile(const RecordingFile&) = delete;
    RecordingFile& operator=(const RecordingFile&) = delete;

    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

class ReplayTest : public ::testing::Test {
protected:
    static HttpReply switchTouchback(const SimulatorProcess& panel, const std::string& enable)
    {
        return panel.get(
            "/enableWifiTouchback?ip=127.0.0.1&enable=" + enable + "&hidemenu=false&isHDMI=true");
    }

    std::vector<std::string> arguments(const RecordingFile& file) const
    {
        return {"--no-announce", "--touch-port", listener.port(), "--replay", file.path()};
    }

    std::string nextTouch()
    {
        const auto datagram = listener.receive();
        return datagram ? datagram->bytes : "nothing";
    }

    TouchListener listener;
};

TEST_F(ReplayTest, RecordingIsPlayedInOrderByteForByteWhenTouchbackIsTurnedOn)
{
    const RecordingFile file(
        "panel-touches 1\n# a tap\n0 DOWN,16383,1,1700000000000;\n0 \\xff\\x00\\\\ x \n1\n"
        "2 UP,16383,1,1700000000002;\n");
    SimulatorProcess panel(arguments(file));
    EXPECT_FALSE(listener.receive(50ms));
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "DOWN,16383,1,1700000000000;");
    EXPECT_EQ(nextTouch(), std::string("\xFF\0\\ x ", 6));
    EXPECT_EQ(nextTouch(), "");
    EXPECT_EQ(nextTouch(), "UP,16383,1,1700000000002;");
    EXPECT_TRUE(panel.process().waitForOutput("panel-simulator: replay ended: 4 datagrams sent\n"));
}

TEST_F(ReplayTest, TimesAreKeptAfterAHeadStartOfOneSecond)
{
    const RecordingFile file("panel-touches 1\n7000 a\n7150 b\n7151 c\n7500 d\n");
    SimulatorProcess panel(arguments(file));
    const auto begin = std::chrono::steady_clock::now();
    switchTouchback(panel, "true");
    std::vector<std::chrono::steady_clock::time_point> times;
    for (const char* expected : {"a", "b", "c", "d"}) {
        const auto datagram = listener.receive();
        ASSERT_TRUE(datagram);
        EXPECT_EQ(datagram->bytes, expected);
        times.push_back(datagram->time);
    }
    EXPECT_GE(times[0] - begin, 1000ms);
    // From the beginning, since a busy computer may see any single one late, but none early.
    EXPECT_GE(times[1] - begin, 1150ms);
    EXPECT_GE(times[2] - begin, 1151ms);
    EXPECT_GE(times[3] - begin, 1500ms);
    EXPECT_LE(times[3] - begin, 5000ms);
}

TEST_F(ReplayTest, RepeatedRequestDoesNotBeginAgainButTurningOnAnewDoes)
{
    const RecordingFile file("panel-touches 1\n0 a\n");
    SimulatorProcess panel(arguments(file));
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
    switchTouchback(panel, "true");
    EXPECT_FALSE(listener.receive(1500ms));
    switchTouchback(panel, "false");
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
}

TEST_F(ReplayTest, AnotherComputerThatAsksMeanwhileGetsTheRestAndNoSecondReplay)
{
    const RecordingFile file("panel-touches 1\n0 a\n600 b\n");
    SimulatorProcess panel(arguments(file));
    panel.get("/enableWifiTouchback?ip=127.0.0.2&enable=true&hidemenu=false&isHDMI=true");
    ASSERT_TRUE(panel.process().waitForOutput("replay of 2 datagrams begins"));
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
    EXPECT_EQ(nextTouch(), "b");
    EXPECT_FALSE(listener.receive(1500ms));
}

TEST_F(ReplayTest, SwitchingOffEndsItAndSaysSo)
{
    const RecordingFile file("panel-touches 1\n0 a\n400 b\n");
    SimulatorProcess panel(arguments(file));
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
    switchTouchback(panel, "false");
    EXPECT_TRUE(
        panel.process().waitForOutput("replay ended: 1 datagram sent, then nobody has asked for touches\n"));
    EXPECT_FALSE(listener.receive(100ms));
}

TEST_F(ReplayTest, RequestPlaysItAtOnceAndAnswersAtItsEnd)
{
    const RecordingFile file("panel-touches 1\n0 a\n150 b\n");
    SimulatorProcess panel(arguments(file));
    EXPECT_EQ(panel.post("/simulator/replay", "").status, 409);
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
    EXPECT_EQ(nextTouch(), "b");
    ASSERT_TRUE(panel.process().waitForOutput("replay ended"));
    const auto begin = std::chrono::steady_clock::now();
    const HttpReply reply = panel.post("/simulator/replay", "");
    EXPECT_EQ(reply.body, "sent 2 datagrams\n");
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 150ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 1000ms);
    EXPECT_EQ(nextTouch(), "a");
    EXPECT_EQ(nextTouch(), "b");
}

TEST_F(ReplayTest, RequestMayBringARecordingOfItsOwn)
{
    SimulatorProcess panel({"--no-announce", "--touch-port", listener.port()});
    EXPECT_TRUE(panel.state()["replay"].isNull());
    switchTouchback(panel, "true");
    EXPECT_EQ(panel.post("/simulator/replay", "").status, 400);
    EXPECT_EQ(panel.post("/simulator/replay", "panel-touches 1\n0 a\nb\n").body,
        "line 3: a time is a whole number of milliseconds, at most 86400000\n");
    EXPECT_EQ(panel.post("/simulator/replay", "panel-touches 1\n0 a\n").status, 200);
    EXPECT_EQ(nextTouch(), "a");
    EXPECT_EQ(panel.state()["replay"].toObject()["datagrams"].toInt(), 1);
}

TEST_F(ReplayTest, OneRecordingIsPlayedAtATimeAndTheStateTells)
{
    SimulatorProcess panel({"--no-announce", "--touch-port", listener.port()});
    switchTouchback(panel, "true");
    auto first =
        std::async([&] { return panel.post("/simulator/replay", "panel-touches 1\n0 a\n400 b\n").status; });
    EXPECT_EQ(nextTouch(), "a");
    EXPECT_TRUE(panel.state()["replay"].toObject()["playing"].toBool());
    EXPECT_EQ(
        panel.post("/simulator/replay", "panel-touches 1\n0 c\n").body, "a recording is being played\n");
    EXPECT_EQ(panel.post("/simulator/stroke?id=x&part=0", "UP 1 2").body, "a recording is being played\n");
    EXPECT_EQ(first.get(), 200);
    EXPECT_FALSE(panel.state()["replay"].toObject()["playing"].toBool());
}

TEST_F(ReplayTest, InvalidRecordingIsOneLineAndStatus2)
{
    const auto run = [](const std::string& file) {
        ChildProcess process({PANEL_SIMULATOR, "--no-announce", "--address", "127.0.0.1", "--service-port",
            "0", "--upload-port", "0", "--replay", file});
        const auto status = process.waitForExit();
        return std::to_string(status.value_or(-1)) + " " + process.output();
    };
    const RecordingFile file("panel-touches 1\n0 a\n\nx b\n");
    EXPECT_EQ(run(file.path()),
        "2 panel-simulator: --replay " + file.path()
            + ": line 4: a time is a whole number of milliseconds, at most 86400000\n");
    EXPECT_EQ(run("/nowhere/x"), "2 panel-simulator: --replay /nowhere/x: No such file or directory\n");
    EXPECT_EQ(run("/"), "2 panel-simulator: --replay /: Is a directory\n");
    EXPECT_EQ(
        run("/dev/zero"), "2 panel-simulator: --replay /dev/zero: a recording has at most 67108864 bytes\n");
}

TEST_F(ReplayTest, RecordingOf67108864BytesIsTheLargest)
{
    std::string content = "panel-touches 1\n0 a\n";
    const std::string comment = "#" + std::string(65'534, 'x') + "\n";
    while (content.size() + comment.size() <= 67'108'864)
        content += comment;
    content += "#" + std::string(67'108'863 - content.size(), 'x');
    ASSERT_EQ(content.size(), 67'108'864U);
    {
        const RecordingFile file(content);
        SimulatorProcess panel(arguments(file));
        EXPECT_EQ(panel.state()["replay"].toObject()["datagrams"].toInt(), 1);
    }
    const RecordingFile tooLarge(content + "x");
    ChildProcess refused({PANEL_SIMULATOR, "--no-announce", "--replay", tooLarge.path()});
    EXPECT_EQ(refused.waitForExit(), 2);
    EXPECT_THAT(refused.output(), HasSubstr(": a recording has at most 67108864 bytes\n"));
}

TEST_F(ReplayTest, SignalEndsARecordingThatIsPlayed)
{
    const RecordingFile file("panel-touches 1\n0 a\n86400000 b\n");
    SimulatorProcess panel(arguments(file));
    switchTouchback(panel, "true");
    EXPECT_EQ(nextTouch(), "a");
    panel.process().sendSignal(SIGTERM);
    EXPECT_EQ(panel.process().waitForExit(), 0);
    EXPECT_THAT(
        panel.process().output(), HasSubstr("replay ended: 1 datagram sent, then the panel is being"));
}

} // namespace
} // namespace companion::testing
