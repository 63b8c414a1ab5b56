#include "platform/HttpSession.h"

#include <gtest/gtest.h>

namespace companion::testing {

TEST(HttpSessionTest, PanelUrlsAreUrls)
{
    EXPECT_TRUE(urlFromText("http://192.168.1.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping"));
    EXPECT_TRUE(urlFromText("http://10.-1.2.3:5505/uploadfile"));
    EXPECT_TRUE(urlFromText("http://panel.local/a%20b"));
    EXPECT_EQ(urlFromText("http://192.168.1.20:5000/ws"), Url{"http://192.168.1.20:5000/ws"});
}

TEST(HttpSessionTest, BlanksControlCharactersAndLettersBeyondAsciiAreNotTaken)
{
    EXPECT_FALSE(urlFromText("http://192.168.1 .20:5000/ws"));
    EXPECT_FALSE(urlFromText(" http://192.168.1.20/"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/ "));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/\r\nX: y"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/\t"));
    EXPECT_FALSE(urlFromText(std::string("http://192.168.1.20/\0x", 22)));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/\x7F"));
    EXPECT_FALSE(urlFromText("http://p\xC3\xA4nel/"));
}

TEST(HttpSessionTest, CharactersThatUrlsDoNotHaveAreNotTaken)
{
    for (const char c : {'"', '<', '>', '\\', '^', '`', '{', '|', '}'})
        EXPECT_FALSE(urlFromText(std::string("http://192.168.1.20/") + c)) << c;
    EXPECT_FALSE(urlFromText("http://192.168.1.20/%"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/%4"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20/%4g"));
    EXPECT_TRUE(urlFromText("http://192.168.1.20/%4A"));
}

TEST(HttpSessionTest, WithoutSchemeHostOrPortNumberItIsNone)
{
    EXPECT_FALSE(urlFromText(""));
    EXPECT_FALSE(urlFromText("192.168.1.20:5000/ws"));
    EXPECT_FALSE(urlFromText("http:192.168.1.20"));
    EXPECT_FALSE(urlFromText("http:/192.168.1.20/"));
    EXPECT_FALSE(urlFromText("http:///192.168.1.20/"));
    EXPECT_FALSE(urlFromText("http://"));
    EXPECT_FALSE(urlFromText("http://:5000/ws"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20:65536/"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20:5x/"));
    EXPECT_FALSE(urlFromText("http://192.168.1.20:/"));
    EXPECT_TRUE(urlFromText("http://192.168.1.20:65535/"));
    EXPECT_TRUE(urlFromText("http://192.168.1.20:65535"));
    EXPECT_TRUE(urlFromText("http://192.168.1.20?ip=1:x"));
}

TEST(HttpSessionTest, OtherSchemesUserNamesAndEscapedHostsAreNotTaken)
{
    EXPECT_FALSE(urlFromText("https://192.168.1.20/"));
    EXPECT_FALSE(urlFromText("file:///etc/hostname"));
    EXPECT_FALSE(urlFromText("http://user@192.168.1.20/"));
    EXPECT_FALSE(urlFromText("http://192%2e168.1.20/"));
}

} // namespace companion::testing
