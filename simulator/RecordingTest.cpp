#include "simulator/Recording.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::chrono_literals;

Gesture recording(const std::string& lines)
{
    auto parsed = parseRecording("panel-touches 1\n" + lines);
    EXPECT_TRUE(std::holds_alternative<Gesture>(parsed)) << std::get<std::string>(parsed);
    return std::holds_alternative<Gesture>(parsed) ? std::get<Gesture>(parsed) : Gesture();
}

std::string problemOfText(std::string_view text)
{
    const auto parsed = parseRecording(text);
    return std::holds_alternative<std::string>(parsed) ? std::get<std::string>(parsed) : "none";
}

std::string recordingProblem(const std::string& lines)
{
    return problemOfText("panel-touches 1\n" + lines);
}

TEST(RecordingTest, TimesFromTheFirstOnBecomePausesAndDatagramsGoOutAsTheyCame)
{
    EXPECT_EQ(recording("0 DOWN,16383,16383,1700000000000;\n16 MOVE,1,2,3;\n16 x\n2041 UP,4,5,6;\n"),
        (Gesture{{false, "DOWN,16383,16383,1700000000000;", 0ms}, {false, "MOVE,1,2,3;", 16ms},
            {false, "x", 0ms}, {false, "UP,4,5,6;", 2025ms}}));
}

TEST(RecordingTest, FirstDatagramGoesOutAtOnceWhateverItsTime)
{
    EXPECT_EQ(recording("5000 a\n5007 b"), (Gesture{{false, "a", 0ms}, {false, "b", 7ms}}));
}

TEST(RecordingTest, CommentsAndEmptyLinesAreIgnored)
{
    EXPECT_EQ(
        recording("# made in room 204\n\n1 a\n#0 b\n2 c\n"), (Gesture{{false, "a", 0ms}, {false, "c", 1ms}}));
}

TEST(RecordingTest, EverythingAfterTheFirstBlankIsTheDatagram)
{
    EXPECT_EQ(recording("0   a b \n0 #c\n0 \n0\n"),
        (Gesture{{false, "  a b ", 0ms}, {false, "#c", 0ms}, {false, "", 0ms}, {false, "", 0ms}}));
}

TEST(RecordingTest, EscapesStandForBytes)
{
    EXPECT_EQ(recording(R"(0 \x00\xff\xFE\\x41\x0a)"),
        (Gesture{{false, std::string("\0\xFF\xFE\\x41\n", 8), 0ms}}));
}

TEST(RecordingTest, LinesMayEndWithCrLf)
{
    const auto parsed = parseRecording("panel-touches 1\r\n0 a\r\n\r\n");
    EXPECT_EQ(std::get<Gesture>(parsed), (Gesture{{false, "a", 0ms}}));
}

TEST(RecordingTest, HeaderNamesFormatAndVersion)
{
    const std::string noRecording =
        "line 1: this is no recording of touches: it begins with \"panel-touches 1\"";
    for (const char* text : {"", "\n", "0 a", "panel-touche 1", "# panel-touches 1\npanel-touches 1\n0 a"})
        EXPECT_EQ(problemOfText(text), noRecording) << text;
    for (const char* text : {"panel-touches", "panel-touches 2", "panel-touches 10", "panel-touches  1"})
        EXPECT_EQ(problemOfText(text), "line 1: only version 1 of recordings is known") << text;
}

TEST(RecordingTest, ErrorNamesItsLine)
{
    EXPECT_EQ(
        recordingProblem("0 a\n\nb"), "line 4: a time is a whole number of milliseconds, at most 86400000");
    EXPECT_EQ(recordingProblem("7 a\n6 b"), "line 3: the time is before that of the datagram above");
    EXPECT_EQ(recordingProblem("0 a\tb"),
        "line 2: a byte that cannot be printed is written as \\x and two hexadecimal digits");
    EXPECT_EQ(recordingProblem("0 Größe"),
        "line 2: a byte that cannot be printed is written as \\x and two hexadecimal digits");
    EXPECT_EQ(recordingProblem("# nothing\n"), "it holds no datagrams");
}

TEST(RecordingTest, TimesAreDecimalDigitsUpToADay)
{
    EXPECT_EQ(recordingProblem("86400000 a"), "none");
    for (const char* line : {"86400001 a", "-1 a", "1.5 a", "0x1 a", " 1 a", "99999999999999999999999 a"})
        EXPECT_EQ(
            recordingProblem(line), "line 2: a time is a whole number of milliseconds, at most 86400000")
            << line;
}

TEST(RecordingTest, BackslashIsFollowedByAnotherOrByTwoHexadecimalDigits)
{
    for (const char* line :
        {R"(0 \)", R"(0 \n)", R"(0 \x)", R"(0 \x1)", R"(0 \x1g)", R"(0 \x-1)", R"(0 \X41)"})
        EXPECT_EQ(recordingProblem(line),
            "line 2: after a backslash comes another one, or x and two hexadecimal digits")
            << line;
}

TEST(RecordingTest, DatagramOf65507BytesIsTheLongest)
{
    EXPECT_EQ(recordingProblem("0 " + std::string(65507, 'x')), "none");
    EXPECT_EQ(
        recordingProblem("0 " + std::string(65508, 'x')), "line 2: a datagram holds at most 65507 bytes");
}

TEST(RecordingTest, LineOf262037BytesIsTheLongest)
{
    std::string longest = "86400000 ";
    for (int i = 0; i < 65507; ++i)
        longest += "\\xff";
    ASSERT_EQ(longest.size(), 262'037U);
    EXPECT_EQ(recordingProblem(longest), "none");
    EXPECT_EQ(recordingProblem("0 a\n#" + std::string(262'036, 'x')), "none");
    EXPECT_EQ(
        recordingProblem("0 a\n#" + std::string(262'037, 'x')), "line 3: a line has at most 262037 bytes");
}

} // namespace
} // namespace companion::simulator
