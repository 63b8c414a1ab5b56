#include "simulator/PictureType.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::string_view_literals;

TEST(PictureTypeTest, PicturesAreKnownByTheirFirstBytes)
{
    EXPECT_EQ(pictureType("\x89PNG\r\n\x1A\n\0\0\0\rIHDR"sv), "image/png");
    EXPECT_EQ(pictureType("\xFF\xD8\xFF\xE0\0\x10JFIF"sv), "image/jpeg");
    EXPECT_EQ(pictureType("GIF87a"), "image/gif");
    EXPECT_EQ(pictureType("GIF89a"), "image/gif");
    EXPECT_EQ(pictureType("RIFF\x24\0\0\0WEBPVP8 "sv), "image/webp");
    EXPECT_EQ(pictureType("BM\x46\0\0\0\0\0\0\0\x36\0"sv), "image/bmp");
}

TEST(PictureTypeTest, NothingElseIsAPicture)
{
    for (const std::string_view bytes : {""sv, "<svg xmlns='http://www.w3.org/2000/svg'>"sv,
             "<!DOCTYPE html>"sv, "%PDF-1.7"sv, "\x89PNG"sv, "\xFF\xD8"sv, "GIF88a"sv, "RIFF\x24\0\0\0WAVE"sv,
             "RIFF"sv, "RIFFWEBP"sv, "BMW is a text"sv, "BM\x46\0\0\0\0\0\0"sv})
        EXPECT_EQ(pictureType(bytes), "") << bytes;
}

} // namespace
} // namespace companion::simulator
