#include "simulator/Text.h"

#include <gtest/gtest.h>

namespace companion::simulator {

TEST(ReplaceControlsTest, ControlCharactersAreQuestionMarks)
{
    EXPECT_EQ(replaceControls("a\x1B[2Jb\n\x7F"), "a?[2Jb??");
    EXPECT_EQ(replaceControls("a\xC2\x9B"
                              "2Jb\xC2\x80\xC2\x9F"),
        "a?2Jb??")
        << "so are those of two bytes";
}

TEST(ReplaceControlsTest, TextIsUnchanged)
{
    EXPECT_EQ(replaceControls("caf\u00E9 \u00A0 \u20AC \U0001F600"), "caf\u00E9 \u00A0 \u20AC \U0001F600");
}

TEST(ReplaceControlsTest, OnlyAsciiIsKeptOfTextThatIsNotUtf8)
{
    EXPECT_EQ(replaceControls("a\xE9z"), "a?z");
}

TEST(ReadLinesTest, LinesEndWithLfOrCrLfAndTheLastOneMayHaveNoEnd)
{
    std::string seen;
    const auto problem = readLines("a\r\n\nb\r", [&seen](std::string_view line, int number) {
        seen += std::to_string(number) + "[" + std::string(line) + "]";
        return std::nullopt;
    });
    EXPECT_EQ(problem, std::nullopt);
    EXPECT_EQ(seen, "1[a]2[]3[b]");
}

TEST(ReadLinesTest, FirstProblemEndsItAndTellsItsLine)
{
    const auto problem = readLines("a\nb\nc\n", [](std::string_view line, int) {
        return line == "a" ? std::nullopt : std::optional("not a but " + std::string(line));
    });
    EXPECT_EQ(problem, "line 2: not a but b");
}

} // namespace companion::simulator
