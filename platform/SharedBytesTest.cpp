#include "platform/SharedBytes.h"

#include <cstring>
#include <gtest/gtest.h>

namespace companion::testing {

TEST(SharedBytesTest, TextIsTakenOverAndNotCopied)
{
    std::string text(100'000, 'x');
    const char* const address = text.data();
    const SharedBytes bytes = sharedBytes(std::move(text));
    EXPECT_EQ(bytes->data(), address);
    EXPECT_EQ(bytes->size(), 100'000U);
}

TEST(SharedBytesTest, ShortTextStaysWhereItIs)
{
    SharedBytes bytes = sharedBytes("short");
    const SharedBytes other = bytes;
    bytes.reset();
    EXPECT_EQ(*other, "short");
    EXPECT_EQ(*sharedBytes(""), "");
}

TEST(SharedBytesTest, MemoryMayBeLongerThanWhatIsMeant)
{
    auto memory = std::make_unique<char[]>(8);
    std::memcpy(memory.get(), "abcdefgh", 8);
    const char* const address = memory.get();
    const SharedBytes bytes = sharedBytes(std::move(memory), 3);
    EXPECT_EQ(*bytes, "abc");
    EXPECT_EQ(bytes->data(), address);
}

} // namespace companion::testing
