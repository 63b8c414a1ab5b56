#include "simulator/Text.h"

#include <gtest/gtest.h>

namespace companion::simulator {

TEST(PrintableTest, ControlCharactersAreQuestionMarks)
{
    EXPECT_EQ(printable("a\x1B[2Jb\n\x7F"), "a?[2Jb??");
    EXPECT_EQ(printable("a\xC2\x9B"
                        "2Jb\xC2\x80\xC2\x9F"),
        "a?2Jb??")
        << "so are those of two bytes";
}

TEST(PrintableTest, TextStaysAsItIs)
{
    EXPECT_EQ(printable("caf\u00E9 \u00A0 \u20AC \U0001F600"), "caf\u00E9 \u00A0 \u20AC \U0001F600");
}

TEST(PrintableTest, OfWhatIsNoTextOnlyAsciiStays)
{
    EXPECT_EQ(printable("a\xE9z"), "a?z");
}

} // namespace companion::simulator
