#include "simulator/UploadFile.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

TEST(UploadFileNameTest, OrdinaryNamesStayAsTheyAre)
{
    for (const char* name : {"a.png", "Größe 日本.pdf", "no extension", "a\"b.png", "archive.tar.gz"})
        EXPECT_EQ(safeFileName(name), name);
}

TEST(UploadFileNameTest, FoldersAreLeftOut)
{
    EXPECT_EQ(safeFileName("../../etc/passwd"), "passwd");
    EXPECT_EQ(safeFileName("C:\\Users\\a.png"), "a.png");
    EXPECT_EQ(safeFileName("/"), "upload");
    EXPECT_EQ(safeFileName(""), "upload");
}

TEST(UploadFileNameTest, HiddenNamesBecomeVisible)
{
    EXPECT_EQ(safeFileName(".bashrc"), "_.bashrc");
    EXPECT_EQ(safeFileName("x/.."), "_..");
    EXPECT_EQ(safeFileName("."), "_.");
}

TEST(UploadFileNameTest, ControlCharactersAndWhatIsNotUtf8BecomeQuestionMarks)
{
    EXPECT_EQ(safeFileName("a\nb\x7F.png"), "a?b?.png");
    EXPECT_EQ(safeFileName("a\xFF.png"), "a?.png");
}

TEST(UploadFileNameTest, NamesOf200BytesAreTheLongest)
{
    EXPECT_EQ(safeFileName(std::string(196, 'n') + ".png"), std::string(196, 'n') + ".png");
    EXPECT_EQ(safeFileName(std::string(197, 'n') + ".png"), std::string(196, 'n') + ".png");
    EXPECT_EQ(safeFileName(std::string(195, 'n') + "ö.png"), std::string(195, 'n') + ".png");
    EXPECT_EQ(safeFileName("a." + std::string(300, 'n')).size(), 200U);
}

TEST(UploadFileNameTest, NumberComesBeforeTheExtension)
{
    EXPECT_EQ(numberedFileName("a.png", 1), "a.png");
    EXPECT_EQ(numberedFileName("a.png", 2), "a (2).png");
    EXPECT_EQ(numberedFileName("readme", 12), "readme (12)");
}

} // namespace
} // namespace companion::simulator
