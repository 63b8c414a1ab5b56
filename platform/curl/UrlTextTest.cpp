#include "platform/curl/UrlText.h"

#include <gtest/gtest.h>

namespace companion::testing {

TEST(UrlTextTest, PanelUrlsAreUrls)
{
    EXPECT_TRUE(isUrlText("http://192.168.1.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping"));
    EXPECT_TRUE(isUrlText("http://10.-1.2.3:5505/uploadfile"));
    EXPECT_TRUE(isUrlText("http://[fe80::1]:5000/ws"));
    EXPECT_TRUE(isUrlText("https://panel.local/a%20b"));
}

TEST(UrlTextTest, BlanksControlCharactersAndLettersBeyondAsciiAreNotTaken)
{
    EXPECT_FALSE(isUrlText("http://192.168.1 .20:5000/ws"));
    EXPECT_FALSE(isUrlText(" http://192.168.1.20/"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/ "));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/\r\nX: y"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/\t"));
    EXPECT_FALSE(isUrlText(std::string("http://192.168.1.20/\0x", 22)));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/\x7F"));
    EXPECT_FALSE(isUrlText("http://p\xC3\xA4nel/"));
}

TEST(UrlTextTest, CharactersThatUrlsDoNotHaveAreNotTaken)
{
    for (const char c : {'"', '<', '>', '\\', '^', '`', '{', '|', '}'})
        EXPECT_FALSE(isUrlText(std::string("http://192.168.1.20/") + c)) << c;
    EXPECT_FALSE(isUrlText("http://192.168.1.20/%"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/%4"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20/%4g"));
    EXPECT_TRUE(isUrlText("http://192.168.1.20/%4A"));
}

TEST(UrlTextTest, WithoutSchemeHostOrPortNumberItIsNone)
{
    EXPECT_FALSE(isUrlText(""));
    EXPECT_FALSE(isUrlText("192.168.1.20:5000/ws"));
    EXPECT_FALSE(isUrlText("http:192.168.1.20"));
    EXPECT_FALSE(isUrlText("http:/192.168.1.20/"));
    EXPECT_FALSE(isUrlText("http:///192.168.1.20/"));
    EXPECT_FALSE(isUrlText("http://"));
    EXPECT_FALSE(isUrlText("http://:5000/ws"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20:65536/"));
    EXPECT_FALSE(isUrlText("http://192.168.1.20:5x/"));
    EXPECT_TRUE(isUrlText("http://192.168.1.20:65535/"));
}

} // namespace companion::testing
