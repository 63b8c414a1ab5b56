#include "simulator/Gesture.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::chrono_literals;

Gesture gesture(std::string_view text)
{
    auto parsed = parseGesture(text);
    EXPECT_TRUE(std::holds_alternative<Gesture>(parsed)) << std::get<std::string>(parsed);
    return std::get<Gesture>(parsed);
}

std::string gestureProblem(std::string_view text)
{
    const auto parsed = parseGesture(text);
    return std::holds_alternative<std::string>(parsed) ? std::get<std::string>(parsed) : "none";
}

TEST(GestureTest, TouchesKeepTheirOrderAndTheirNumbersAsTexts)
{
    EXPECT_EQ(gesture("DOWN 007 -3.50\nMOVE 32767 0\r\nUP 99999 1"),
        (Gesture{{true, "DOWN,007,-3.50,"}, {true, "MOVE,32767,0,"}, {true, "UP,99999,1,"}}));
}

TEST(GestureTest, FourthNumberIsThePauseBefore)
{
    EXPECT_EQ(gesture("DOWN 1 2\nUP 3 4 150"), (Gesture{{true, "DOWN,1,2,"}, {true, "UP,3,4,", 150ms}}));
}

TEST(GestureTest, PausesAddUpToTheNextDatagram)
{
    EXPECT_EQ(gesture("PAUSE 20\nPAUSE 5\nUP 3 4 7\nUP 3 4"),
        (Gesture{{true, "UP,3,4,", 32ms}, {true, "UP,3,4,"}}));
}

TEST(GestureTest, EmptyLinesAndCommentsAreIgnored)
{
    EXPECT_EQ(gesture("\n  \n# a tap\nUP 1 2\n\n"), (Gesture{{true, "UP,1,2,"}}));
}

TEST(GestureTest, RawTextGoesOutAsItIs)
{
    EXPECT_EQ(
        gesture("RAW DOWN,1;  x \nRAW\nRAW "), (Gesture{{false, "DOWN,1;  x "}, {false, ""}, {false, ""}}));
}

TEST(GestureTest, HexMakesBytes)
{
    EXPECT_EQ(gesture("HEX 00 fF41\nHEX"), (Gesture{{false, std::string("\0\xFF\x41", 3)}, {false, ""}}));
}

TEST(GestureTest, ErrorNamesItsLine)
{
    EXPECT_EQ(gestureProblem("UP 1 2\ndown 1 2"), "line 2: unknown word \"down\"");
    EXPECT_EQ(gestureProblem("UP 1"), "line 1: UP takes x, y and perhaps a pause");
    EXPECT_EQ(gestureProblem("UP 1 2 3 4"), "line 1: UP takes x, y and perhaps a pause");
    EXPECT_EQ(gestureProblem("HEX 123"), "line 1: HEX takes two digits for each byte");
    EXPECT_EQ(gestureProblem("HEX 1g"), "line 1: HEX takes hexadecimal digits");
    EXPECT_EQ(gestureProblem("PAUSE"), "line 1: \"PAUSE ms\" is expected");
    EXPECT_EQ(gestureProblem("\n#\n"), "no touches");
}

TEST(GestureTest, CoordinatesAreDecimalNumbers)
{
    for (const char* text : {"nan", "1e3", "+1", "0x1", "1.", ".5", "-", "1,5"})
        EXPECT_EQ(gestureProblem("UP 1 " + std::string(text)), "line 1: x and y must be decimal numbers")
            << text;
}

TEST(GestureTest, PauseOf60000MillisecondsIsTheLongest)
{
    EXPECT_EQ(gestureProblem("UP 1 2 60000"), "none");
    EXPECT_NE(gestureProblem("UP 1 2 60001"), "none");
    EXPECT_NE(gestureProblem("UP 1 2 -1"), "none");
    EXPECT_NE(gestureProblem("UP 1 2 99999999999999999999999"), "none");
}

TEST(GestureTest, DatagramOf65507BytesIsTheLongest)
{
    EXPECT_EQ(gestureProblem("RAW " + std::string(65507, 'x')), "none");
    EXPECT_EQ(
        gestureProblem("RAW " + std::string(65508, 'x')), "line 1: a datagram holds at most 65507 bytes");
}

} // namespace
} // namespace companion::simulator
