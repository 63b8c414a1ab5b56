#include "cli/TouchesCommand.h"

#include "cli/testing/CommandTest.h"

#include <cstdio>
#include <filesystem>
#include <sstream>
#include <unistd.h>

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class TouchesCommandTest : public CommandTest {
protected:
    TouchesCommand::Tools tools() { return {search(), sockets, output}; }

    void deliver(std::string_view datagram, std::chrono::microseconds later = 0us,
        const std::string& from = "192.168.1.20")
    {
        now += later;
        sockets.deliver(datagram, {from, 50000, now});
    }
};

TEST_F(TouchesCommandTest, TouchesArePrintedAndAnInterruptEndsWithASummary)
{
    TouchesCommand command(tools(), {});
    start(command);
    deliver("DOWN,1,2,10;");
    deliver("MOVE,3,4,26;", 16204us);
    deliver("UP,3,4,42;", 16ms);
    EXPECT_EQ(command.interrupt(), Interruption::endWithResult);
    EXPECT_EQ(resultText(), "0 3 touches in 0.032 s (62 a second), longest gap in a press 16 ms");
    EXPECT_THAT(output.lines,
        ElementsAre("err listening for touches on UDP port 41863",
            "out      0.000 ms  DOWN,1,2,10;  192.168.1.20", "out     16.204 ms  MOVE,3,4,26;  192.168.1.20",
            "out     32.204 ms  UP,3,4,42;  192.168.1.20"));
    EXPECT_EQ(sockets.deliver("late"), false);
}

TEST_F(TouchesCommandTest, InterruptWithoutTouchesIsDone)
{
    TouchesCommand command(tools(), {});
    start(command);
    command.interrupt();
    command.interrupt();
    EXPECT_EQ(resultText(), "0 no touches");
}

TEST_F(TouchesCommandTest, JsonIsOneObjectForEachTouch)
{
    TouchesCommand command(tools(), {.isJson = true});
    start(command);
    deliver("DOWN,007,2.5,x");
    deliver("UP,here,,", 1500us);
    deliver("UP,1\x01", 1500us);
    EXPECT_THAT(output.lines,
        ElementsAre("err listening for touches on UDP port 41863",
            R"(out {"ms":0,"from":"192.168.1.20","event":"DOWN","x":7,"y":2.5,"timeStamp":"x"})",
            R"(out {"ms":1.5,"from":"192.168.1.20","event":"UP","x":"here","y":"","timeStamp":""})",
            R"(out {"ms":3,"from":"192.168.1.20","malformed":"UP,1\\x01"})"));
    command.interrupt();
    EXPECT_THAT(jsonText(result->json), HasSubstr(R"("touches":3)"));
}

TEST_F(TouchesCommandTest, OnlyTheChosenPanelCounts)
{
    TouchesCommand command(tools(), {.choice = {"192.168.1.20", std::nullopt}});
    start(command);
    deliver("DOWN,1,2,10;", 0us, "192.168.1.21");
    deliver("DOWN,1,2,10;");
    command.interrupt();
    EXPECT_THAT(resultText(), HasSubstr("0 1 touch in 0 s"));
}

TEST_F(TouchesCommandTest, TimeThatIsOverWithoutTouchesIsStatus4)
{
    TouchesCommand command(tools(), {.time = 250ms});
    start(command);
    queue.advance(249ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(resultText(),
        "4 no touches within 0.25 s: is touchback on, and does the firewall let UDP port 41863 in?");
}

TEST_F(TouchesCommandTest, TimeThatIsOverAfterATouchIsDone)
{
    TouchesCommand command(tools(), {.time = 250ms});
    start(command);
    deliver("DOWN,1,2,10;");
    queue.advance(250ms);
    EXPECT_EQ(result->status, ExitStatus::done);
}

TEST_F(TouchesCommandTest, PortThatIsTakenIsStatus4WithItsHolder)
{
    sockets.bindError = "Address already in use";
    portHolders = {{"socat", 123}, {"nc", 45}};
    TouchesCommand command(tools(), {.recording = "/nonexistent/never-opened"});
    start(command);
    EXPECT_EQ(resultText(), "4 UDP port 41863 is held by socat (process 123) and nc (process 45)");
}

TEST_F(TouchesCommandTest, HolderThatIsNotToBeKnownAndOtherErrorsAreTold)
{
    EXPECT_EQ(whyNoTouchesCanBeHeard("Address already in use", probes),
        "UDP port 41863 is held by a program that this user may not see");
    EXPECT_EQ(whyNoTouchesCanBeHeard("Permission denied", probes), "UDP port 41863: Permission denied");
}

class RecordingTest : public TouchesCommandTest {
protected:
    RecordingTest()
        : file(std::filesystem::temp_directory_path()
            / ("panelctl-recording-" + std::to_string(getpid()) + ".txt"))
    {
    }
    ~RecordingTest() override { std::filesystem::remove(file); }

    std::string recorded() const
    {
        std::ostringstream text;
        text << std::ifstream(file).rdbuf();
        return text.str();
    }

    const std::filesystem::path file;
};

TEST_F(RecordingTest, EachTouchIsInTheFileAsSoonAsItHasCome)
{
    TouchesCommand command(tools(), {.recording = file.string(), .recordingComment = "room 204"});
    start(command);
    EXPECT_EQ(recorded(), "panel-touches 1\n# room 204\n");
    deliver("DOWN,16383,16383,1700000000000;");
    deliver("MOVE,1\n\\ \xff", 16'999us);
    deliver("", 100ms);
    EXPECT_EQ(recorded(),
        "panel-touches 1\n# room 204\n0 DOWN,16383,16383,1700000000000;\n"
        "16 MOVE,1\\x0a\\\\ \\xff\n116 \n");
}

TEST_F(RecordingTest, FileThatCannotBeWrittenIsStatus2)
{
    TouchesCommand command(tools(), {.recording = "/nonexistent/file"});
    start(command);
    EXPECT_EQ(resultText(), "2 cannot write /nonexistent/file");
}

TEST_F(RecordingTest, RecordingStopsAtItsLargestSizeAndSaysSoOnce)
{
    const std::string whole = "panel-touches 1\n# c\n0 DOWN,1,2,3;\n16 MOVE,1,2,3;\n";
    TouchesCommand command(
        tools(), {.recording = file.string(), .recordingComment = "c", .mostRecordedBytes = whole.size()});
    start(command);
    deliver("DOWN,1,2,3;");
    deliver("MOVE,1,2,3;", 16ms);
    EXPECT_THAT(output.lines, ::testing::Not(::testing::Contains(HasSubstr("--max-size"))));
    deliver("", 1ms);
    deliver("UP,1,2,3;", 1ms);
    EXPECT_EQ(recorded(), whole);
    EXPECT_THAT(output.lines,
        ElementsAre(HasSubstr("listening"), HasSubstr("DOWN"), HasSubstr("MOVE"), HasSubstr("17.000 ms"),
            "err the recording has reached its --max-size: no more touches are written to " + file.string(),
            HasSubstr("UP")));
}

TEST_F(RecordingTest, DiskThatIsFullEndsTheCommand)
{
    if (!std::filesystem::is_character_file("/dev/full"))
        GTEST_SKIP() << "there is no /dev/full";
    TouchesCommand command(tools(), {.recording = "/dev/full"});
    start(command);
    EXPECT_EQ(resultText(), "2 cannot write /dev/full");
}

TEST(TouchRecordingTest, WhatComesADayLaterIsLeftOut)
{
    std::ostringstream text;
    TouchRecording recording(text, "c");
    const TouchRecording::TimePoint first{77ms};
    recording.take("a", first);
    recording.take("b", first + 24h);
    recording.take("c", first + 24h + 1ms);
    EXPECT_EQ(text.str(), "panel-touches 1\n# c\n0 a\n86400000 b\n");
}

TEST(TouchRecordingTest, BytesFrom32To126StandForThemselvesButTheBackslash)
{
    EXPECT_EQ(recordedText("\x1f ~\x7f\\"), "\\x1f ~\\x7f\\\\");
}

TEST(TouchRecordingTest, CommentStaysOneLine)
{
    std::ostringstream text;
    TouchRecording recording(text, "one\ntwo");
    EXPECT_EQ(text.str(), "panel-touches 1\n# one\\x0atwo\n");
}

class TouchStatisticsTest : public ::testing::Test {
protected:
    void take(std::string_view datagram, std::chrono::microseconds later)
    {
        now += later;
        statistics.take(datagram, now);
    }

    TouchStatistics statistics;
    TouchStatistics::TimePoint now{5s};
};

TEST_F(TouchStatisticsTest, GapsCountWithinAPressOnly)
{
    take("DOWN,1,1,1", 0us);
    take("MOVE,1,1,2", 100ms);
    take("UP,1,1,3", 100'001us);
    take("DOWN,1,1,4", 10s);
    take("UP,1,1,5", 20ms);
    EXPECT_EQ(statistics.text(),
        "5 touches in 10.22 s (0 a second), longest gap in a press 100 ms, 1 gap over 100 ms");
}

TEST_F(TouchStatisticsTest, TimeStampsThatGoBackAreCounted)
{
    take("DOWN,1,1,5", 0us);
    take("MOVE,1,1,5", 1ms);
    take("MOVE,1,1,4", 1ms);
    take("MOVE,1,1,word", 1ms);
    take("UP,1,1,3", 1ms);
    EXPECT_EQ(statistics.text(),
        "5 touches in 0.004 s (1000 a second), longest gap in a press 1 ms, 2 with an earlier time stamp "
        "than the one before");
}

TEST_F(TouchStatisticsTest, WhatIsNoTouchIsMalformed)
{
    take("DOWN,1,1", 0us);
    take("down,1,1,1", 1ms);
    take("DOWN,x,1,1", 1ms);
    take("DOWN,1,,1", 1ms);
    take("\xff", 1ms);
    EXPECT_EQ(
        statistics.text(), "5 touches in 0.004 s (1000 a second), longest gap in a press 0 ms, 5 malformed");
    EXPECT_EQ(jsonText(statistics.json()),
        R"({"touches":5,"seconds":0.004,"perSecond":1000,"longestGapMs":0,"gapsOver100Ms":0,"outOfOrder":0,)"
        R"("malformed":5})");
}

} // namespace companion::cli::testing
