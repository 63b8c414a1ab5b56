#include "platform/posix/HarmlessLine.h"

#include <gtest/gtest.h>

namespace companion::testing {
namespace {

constexpr std::size_t longest = 40;

TEST(HarmlessLineTest, OrdinaryTextWithTabsAndUmlautsStaysAsItIs)
{
    EXPECT_EQ(harmlessLine("Paired\tto Größe 東京", longest), "Paired\tto Größe 東京");
    EXPECT_EQ(harmlessLine("", longest), "");
}

TEST(HarmlessLineTest, LineBreaksAreSpelledOut)
{
    EXPECT_EQ(harmlessLine("one\ntwo\r\nthree", longest), "one\\ntwo\\r\\nthree");
}

TEST(HarmlessLineTest, EscapeSequencesReachNoTerminal)
{
    EXPECT_EQ(harmlessLine("\x1b[2J\x7f", longest), "\\x1b[2J\\x7f");
    EXPECT_EQ(harmlessLine("\xc2\x9b"
                           "2J",
                  longest),
        "\\x9b2J");
}

TEST(HarmlessLineTest, AZeroByteAndAUnitSeparatorAreSpelledOutAndABlankIsNot)
{
    EXPECT_EQ(harmlessLine(std::string_view("a\0b", 3), longest), "a\\x00b");
    EXPECT_EQ(harmlessLine("\x1f \x20", longest), "\\x1f  ");
}

TEST(HarmlessLineTest, ALetterBesideTheC1RangeIsNoControlCharacter)
{
    EXPECT_EQ(harmlessLine("\xc2\xa0\xc3\x9f", longest), "\xc2\xa0\xc3\x9f");
    EXPECT_EQ(harmlessLine("\xc2", longest), "\xc2");
}

TEST(HarmlessLineTest, ALineOf40BytesIsWholeAndOneOf41IsCutOff)
{
    const std::string whole(40, 'x');
    EXPECT_EQ(harmlessLine(whole, longest), whole);
    EXPECT_EQ(harmlessLine(whole + "y", longest), whole + "...");
}

TEST(HarmlessLineTest, ACutLineEndsWithAWholeCharacter)
{
    EXPECT_EQ(harmlessLine(std::string(39, 'x') + "東京", longest), std::string(39, 'x') + "...");
    EXPECT_EQ(harmlessLine(std::string(100, '\x80'), longest), "...");
}

} // namespace
} // namespace companion::testing
