#include "panel/Uuid.h"

#include <gtest/gtest.h>
#include <set>

namespace companion::testing {

TEST(UuidTest, FourteenthCharacterTellsVersion4AndTheTwentiethTheVariant)
{
    UuidBytes bytes{};
    EXPECT_EQ(uuidText(bytes), "00000000-0000-4000-8000-000000000000");
    bytes.fill(0xFF);
    EXPECT_EQ(uuidText(bytes), "FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF");
}

/// The example of RFC 9562, appendix A.3, in upper case.
TEST(UuidTest, BytesAreWrittenInTheirOrder)
{
    const UuidBytes bytes{
        0x91, 0x91, 0x08, 0xF7, 0x52, 0xD1, 0x33, 0x20, 0x5B, 0xAC, 0xF8, 0x47, 0xDB, 0x41, 0x48, 0xA8};
    EXPECT_EQ(uuidText(bytes), "919108F7-52D1-4320-9BAC-F847DB4148A8");
}

TEST(UuidTest, OneThousandAreAllDifferentAndEveryFreeBitIsUsed)
{
    std::set<std::string> texts;
    std::array<std::set<char>, 36> characters;
    for (int count = 0; count < 1000; ++count) {
        const std::string text = makeUuid();
        ASSERT_EQ(text.size(), 36u);
        texts.insert(text);
        for (std::size_t index = 0; index < text.size(); ++index)
            characters[index].insert(text[index]);
    }
    EXPECT_EQ(texts.size(), 1000u);
    for (std::size_t index = 0; index < characters.size(); ++index) {
        const bool isFixed = index == 8 || index == 13 || index == 14 || index == 18 || index == 23;
        EXPECT_EQ(characters[index].size(), isFixed ? 1u : index == 19 ? 4u : 16u) << index;
    }
}

} // namespace companion::testing
