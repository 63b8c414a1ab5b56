#include "simulator/BrowserSafety.h"

#include <gtest/gtest.h>

namespace companion::simulator {
namespace {

using namespace std::string_view_literals;

constexpr auto noHeader = std::nullopt;
const std::string ownPageOnly = "only the panel's own page may ask for this";
const std::string addressOnly = "open the panel by its address, not by a name of the Internet";

TEST(RequestOriginTest, ScriptsSendNoOriginAndMayAsk)
{
    EXPECT_EQ(foreignOrigin("192.168.1.20:5000", noHeader), std::nullopt);
    EXPECT_EQ(foreignOrigin(noHeader, noHeader), std::nullopt);
}

TEST(RequestOriginTest, OwnPageMayAskByAddressOrByANameOfTheLocalNetwork)
{
    for (const std::string host :
        {"192.168.1.20:5000", "192.168.1.20", "localhost:5000", "panel", "panel-7.local:5000", "p.localhost"})
        EXPECT_EQ(foreignOrigin(host, "http://" + host), std::nullopt) << host;
    EXPECT_EQ(foreignOrigin("Panel.LOCAL:5000", "http://panel.local:5000"), std::nullopt);
}

TEST(RequestOriginTest, PagesOfOtherSitesMayNot)
{
    for (const std::string origin :
        {"http://example.org", "http://192.168.1.21:5000", "http://192.168.1.20", "http://192.168.1.20:50000",
            "https://192.168.1.20:5000", "http://192.168.1.20:5000.example.org", "null", ""})
        EXPECT_EQ(foreignOrigin("192.168.1.20:5000", origin), ownPageOnly) << origin;
    EXPECT_EQ(foreignOrigin(noHeader, "http://192.168.1.20:5000"), ownPageOnly);
}

TEST(RequestOriginTest, NameOfTheInternetThatPointsHereIsNotThePanelsOwn)
{
    for (const std::string host : {"rebound.example.org:5000", "example.org", "local.example.org",
             "192.168.1.20.example.org", "notlocal.org", "1.2.3", "256.1.1.1"}) {
        EXPECT_EQ(foreignOrigin(host, "http://" + host), addressOnly) << host;
        EXPECT_EQ(foreignOrigin(host, noHeader), addressOnly) << host;
    }
}

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
