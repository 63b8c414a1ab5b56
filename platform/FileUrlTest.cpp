#include "platform/FileUrl.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::string_literals;

/// The path, or "none".
static std::string pathOf(const std::string& text)
{
    const auto url = FileUrl::fromText(text);
    return url ? url->path() : "none";
}

TEST(FileUrlTest, PathIsPercentDecoded)
{
    EXPECT_EQ(pathOf("file:///home/ada/plan.pdf"), "/home/ada/plan.pdf");
    EXPECT_EQ(pathOf("file:///home/ada/my%20plan%3f%23%25.pdf"), "/home/ada/my plan?#%.pdf");
    EXPECT_EQ(pathOf("file:///tmp/%C3%84rger%2B%2b.png"), "/tmp/\xC3\x84rger++.png");
    EXPECT_EQ(pathOf("file:///tmp/a+b|c\"d.png"), "/tmp/a+b|c\"d.png");
    EXPECT_EQ(pathOf("file:///tmp/line%0Abreak"), "/tmp/line\nbreak");
}

TEST(FileUrlTest, NoHostAndLocalhostAreThisComputer)
{
    EXPECT_EQ(pathOf("file:/tmp/a"), "/tmp/a");
    EXPECT_EQ(pathOf("file://localhost/tmp/a"), "/tmp/a");
    EXPECT_EQ(pathOf("FILE://LocalHost/tmp/a"), "/tmp/a");
    EXPECT_EQ(pathOf("file:////tmp/a"), "//tmp/a");
}

TEST(FileUrlTest, OtherHostsSchemesAndRelativePathsAreNone)
{
    for (const std::string text :
        {"file://server/share/a", "file://localhost.example/a", "http://localhost/a", "/tmp/a",
            "file:", "file://", "file:a", "file://localhost", "fil", "", "afile:///a"})
        EXPECT_EQ(pathOf(text), "none") << text;
}

TEST(FileUrlTest, BadPercentEncodingsAndNulsAreNone)
{
    for (const std::string& text : {"file:///a%"s, "file:///a%4"s, "file:///a%4g"s, "file:///a%g4"s,
             "file:///a%-1"s, "file:///a%00b"s, "file:///a\0b"s})
        EXPECT_EQ(pathOf(text), "none") << text;
}

TEST(FileUrlTest, QueryAndFragmentAreNoPartOfThePath)
{
    EXPECT_EQ(pathOf("file:///tmp/a.png?version=2"), "/tmp/a.png");
    EXPECT_EQ(pathOf("file:///tmp/a.png#top"), "/tmp/a.png");
}

TEST(FileUrlTest, TextStaysAsItWasGiven)
{
    EXPECT_EQ(FileUrl::fromText("file://localhost/tmp/a%2e")->text(), "file://localhost/tmp/a%2e");
}

TEST(FileUrlTest, EveryByteOfAPathSurvivesItsUrl)
{
    std::string path = "/";
    for (int byte = 1; byte <= 0xFF; ++byte)
        path += static_cast<char>(byte);
    const FileUrl url = FileUrl::fromPath(path);
    EXPECT_EQ(url.path(), path);
    EXPECT_EQ(pathOf(url.text()), path);
    for (const unsigned char c : url.text())
        EXPECT_TRUE(c > ' ' && c < 0x7F && c != '"' && c != '<' && c != '|') << c;
}

TEST(FileUrlTest, UrlOfAPathIsEncodedInUpperCase)
{
    EXPECT_EQ(FileUrl::fromPath("/home/ada/\xC3\x84 (1)~.png").text(), "file:///home/ada/%C3%84%20(1)~.png");
}

TEST(FileUrlTest, LastPathComponentIsTheNameWithoutFoldersAndTrailingSlashes)
{
    EXPECT_EQ(FileUrl::fromPath("/home/ada/Report.final.pdf").lastPathComponent(), "Report.final.pdf");
    EXPECT_EQ(FileUrl::fromPath("/a").lastPathComponent(), "a");
    EXPECT_EQ(FileUrl::fromPath("/home/ada//").lastPathComponent(), "ada");
    EXPECT_EQ(FileUrl::fromPath("/").lastPathComponent(), "/");
    EXPECT_EQ(FileUrl::fromText("file:///tmp/a%2Fb")->lastPathComponent(), "b");
}

TEST(FileUrlTest, NameThatIsNoUtf8IsShownWithReplacementCharactersButKeepsItsPath)
{
    const auto url = FileUrl::fromText("file:///tmp/caf%E9.png");
    EXPECT_EQ(url->path(), "/tmp/caf\xE9.png");
    EXPECT_EQ(url->lastPathComponent(), "caf\xEF\xBF\xBD.png");
}

} // namespace companion::testing
