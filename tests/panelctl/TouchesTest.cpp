#include "tests/panelctl/PanelctlTest.h"

#include <csignal>
#include <fstream>
#include <sstream>

namespace companion::testing {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::MatchesRegex;
using ::testing::StartsWith;
using namespace std::chrono_literals;

constexpr auto listening = "listening for touches on UDP port 41863\n";

class PanelctlTouchesTest : public PanelctlTest {
protected:
    void SetUp() override
    {
        PanelctlTest::SetUp();
        if (IsSkipped())
            return;
        startPanel();
        panel->get("/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true");
    }

    void touch(const std::string& gesture) const
    {
        ASSERT_EQ(panel->post("/simulator/touch", gesture).status, 200);
    }
};

TEST_F(PanelctlTouchesTest, TouchesArePrintedAndSigintEndsWithASummaryAndStatus0)
{
    ChildProcess process(command({"touches"}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    touch("DOWN 1 2\nMOVE 3 4 16\nUP 5 6 150\n");
    ASSERT_TRUE(process.waitForOutput("UP,5,6,"));
    process.sendSignal(SIGINT);
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_THAT(process.output(), HasSubstr("     0.000 ms  DOWN,1,2,"));
    EXPECT_TRUE(process.waitForOutput("3 touches in 0."));
    EXPECT_TRUE(process.waitForOutput("1 gap over 100 ms\n"));
}

TEST_F(PanelctlTouchesTest, TenThousandTouchesArePrintedInOrder)
{
    ChildProcess process(command({"touches", "--json"}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    std::string gesture = "DOWN 0 0\n";
    for (int i = 1; i < 9999; ++i)
        gesture += "MOVE " + std::to_string(i) + " 0" + (i % 100 == 0 ? " 1" : "") + "\n";
    touch(gesture + "UP 9999 0\n");
    ASSERT_TRUE(process.waitForOutput("\"event\":\"UP\"", 30s));
    process.sendSignal(SIGTERM);
    EXPECT_EQ(process.waitForExit(), 0);
    std::istringstream lines(process.output());
    int next = 0;
    for (std::string line; std::getline(lines, line);) {
        const QJsonObject touched = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
        if (touched.contains("x")) {
            ASSERT_EQ(touched["x"].toInt(), next++);
        }
    }
    EXPECT_EQ(next, 10'000);
    const Ending ending{0, process.output()};
    EXPECT_EQ(ending.json()["touches"].toInt(), 10'000);
    EXPECT_EQ(ending.json()["exitStatus"].toInt(), 0);
}

TEST_F(PanelctlTouchesTest, ReaderThatStandsStillMakesNoGaps)
{
    const std::string file = folder / "recording.txt";
    // Its pipe holds about a thousand touches, and for the first three seconds it reads none.
    ChildProcess process(
        {"sh", "-c", "\"$0\" touches --timeout 5 --record \"$1\" | { sleep 3; wc -l; }", PANELCTL, file},
        environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    std::string gesture = "DOWN 0 0\n";
    for (int i = 1; i < 3999; ++i)
        gesture += "MOVE " + std::to_string(i) + " 0" + (i % 2 == 0 ? " 1" : "") + "\n";
    touch(gesture + "UP 3999 0\n");
    EXPECT_TRUE(process.waitForOutput("4001\n", 20s))
        << "every touch and the summary are printed: " << process.output();

    std::ifstream recording(file);
    long longestGap = 0;
    long last = 0;
    long count = 0;
    for (std::string line; std::getline(recording, line);) {
        if (line.find(';') == std::string::npos)
            continue;
        const long time = std::stol(line);
        longestGap = std::max(longestGap, time - last);
        last = time;
        ++count;
    }
    EXPECT_EQ(count, 4000);
    EXPECT_LT(longestGap, 500);
}

TEST_F(PanelctlTouchesTest, ReaderThatIsGoneEndsIt)
{
    ChildProcess process(
        {"bash", "-c", "\"$0\" touches | head -n 1; echo \"status ${PIPESTATUS[0]}\"", PANELCTL},
        environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    touch("DOWN 1 2\n");
    ASSERT_TRUE(process.waitForOutput("DOWN,1,2,"));
    for (int round = 0; round < 100 && !process.waitForOutput("status ", 50ms); ++round)
        touch("MOVE 3 4\n");
    EXPECT_TRUE(process.waitForOutput("status " + std::to_string(128 + SIGPIPE))) << process.output();
}

TEST_F(PanelctlTouchesTest, RecordingHoldsEveryDatagram)
{
    const std::string file = folder / "recording.txt";
    ChildProcess process(command({"touches", "--record", file}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    touch("RAW DOWN,1,2,3;\nPAUSE 30\nHEX 41 0a ff 5c\nPAUSE 30\nHEX\n");
    ASSERT_TRUE(process.waitForOutput("A\\x0a\\xff\\\\"));
    touch("RAW end\n");
    ASSERT_TRUE(process.waitForOutput("end"));
    process.end();
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    EXPECT_THAT(text.str(),
        MatchesRegex("panel-touches 1\n# panelctl [0-9a-f.() ]+, [0-9: -]+ UTC\n0 DOWN,1,2,3;\n"
                     "[0-9]+ A\\\\x0a\\\\xff\\\\\\\\\n[0-9]+ \n[0-9]+ end\n"));
}

TEST_F(PanelctlTouchesTest, RecordingIsReplayedByTheSimulatedPanel)
{
    const std::string file = folder / "recording.txt";
    {
        ChildProcess process(command({"touches", "--record", file}), environment);
        ASSERT_TRUE(process.waitForOutput(listening));
        touch("RAW DOWN,1,2,3;\nPAUSE 30\nHEX 4d 0a ff 5c\nPAUSE 30\nRAW  UP \n");
        ASSERT_TRUE(process.waitForOutput("   UP "));
        process.sendSignal(SIGINT);
        ASSERT_EQ(process.waitForExit(), 0);
    }
    panel.reset();
    startPanel({"--no-announce", "--replay", file});
    ChildProcess process(command({"touches"}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    panel->get("/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true");
    EXPECT_TRUE(process.waitForOutput("DOWN,1,2,3;"));
    EXPECT_TRUE(process.waitForOutput("M\\x0a\\xff\\\\"));
    EXPECT_TRUE(process.waitForOutput("   UP   "));
}

TEST_F(PanelctlTouchesTest, TouchesOfOthersDoNotCount)
{
    ChildProcess process(command({"touches", "--panel-address", "127.0.0.7", "--timeout", "1"}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    touch("DOWN 1 2\n");
    EXPECT_EQ(process.waitForExit(), 4);
    EXPECT_THAT(process.output(), HasSubstr("panelctl: no touches within 1 s"));
}

TEST_F(PanelctlTouchesTest, PortThatIsTakenIsStatus4AndTellsByWhom)
{
    ChildProcess first(command({"touches"}), environment);
    ASSERT_TRUE(first.waitForOutput(listening));
    const Ending second = run({"touches"});
    EXPECT_EQ(second.output,
        "panelctl: UDP port 41863 is held by panelctl (process " + std::to_string(first.pid()) + ")\n");
    EXPECT_EQ(second.status, 4);
}

TEST_F(PanelctlTouchesTest, RecordingStopsAtItsLargestSizeAndPrintingGoesOn)
{
    const std::string file = folder / "recording.txt";
    ChildProcess process(command({"touches", "--record", file, "--max-size", "0.001"}), environment);
    ASSERT_TRUE(process.waitForOutput(listening));
    std::string gesture;
    for (int i = 0; i < 100; ++i)
        gesture += "RAW MOVE," + std::to_string(i) + ",2,3;\n";
    touch(gesture);
    EXPECT_TRUE(process.waitForOutput("MOVE,99,"));
    EXPECT_THAT(process.output(),
        HasSubstr("the recording has reached its --max-size: no more touches are written to " + file + "\n"));
    EXPECT_LE(std::filesystem::file_size(file), 1049U);
    EXPECT_GT(std::filesystem::file_size(file), 1000U);
}

TEST_F(PanelctlTouchesTest, ClosedStandardDescriptorsAreNotUsedForAnythingElse)
{
    const std::string file = folder / "recording.txt";
    ChildProcess process({"sh", "-c",
                             "\"$0\" touches --record \"$1\" <&- >&- 2>&- & child=$!; "
                             "until grep -q panel-touches \"$1\"; do sleep 0.05; done 2>/dev/null; "
                             "readlink /proc/$child/fd/0 /proc/$child/fd/1 /proc/$child/fd/2; kill $child",
                             PANELCTL, file},
        environment);
    EXPECT_EQ(process.waitForExit(), 0);
    EXPECT_EQ(process.output(), "/dev/null\n/dev/null\n/dev/null\n");
}

TEST_F(PanelctlTouchesTest, TooFewDescriptorsAreStatus2AndOneLine)
{
    for (const char* limit : {"8", "20", "40"}) {
        ChildProcess process(
            {"sh", "-c", std::string("ulimit -n ") + limit + "; \"$0\" touches; echo status $?", PANELCTL},
            environment);
        EXPECT_EQ(process.waitForExit(), 0);
        EXPECT_EQ(process.output(),
            "panelctl: too few file descriptors: 48 must be free (see ulimit -n)\nstatus 2\n")
            << limit;
    }
}

TEST_F(PanelctlTouchesTest, FileThatCannotBeWrittenIsStatus2)
{
    const Ending ending = run({"touches", "--record", "/nonexistent/file"});
    EXPECT_EQ(ending.output, "panelctl: cannot write /nonexistent/file\n");
    EXPECT_EQ(ending.status, 2);
}

} // namespace companion::testing
