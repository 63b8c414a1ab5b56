#include "app/FilesGiven.h"

#include "platform/FileUrl.h"

#include <filesystem>
#include <gtest/gtest.h>

namespace companion::testing {

TEST(FilesGivenTest, PathsBecomeUrlsOfAbsolutePaths)
{
    const std::string folder = std::filesystem::current_path().string();
    EXPECT_EQ(urlsOfFiles({"/home/ada/a b.png", "plan.pdf", "9:30.pdf"}),
        (std::vector<std::string>{"file:///home/ada/a%20b.png",
            FileUrl::fromPath(folder + "/plan.pdf").text(), FileUrl::fromPath(folder + "/9:30.pdf").text()}));
}

TEST(FilesGivenTest, UrlsStayAsTheyAre)
{
    const std::vector<std::string> urls{"file:///home/ada/a%20b.png", "smb://server/plan.pdf"};
    EXPECT_EQ(urlsOfFiles(urls), urls);
}

TEST(FilesGivenTest, PathThatHoldsAUrlInAFolderIsAPath)
{
    EXPECT_EQ(urlsOfFiles({"/tmp/http://x"}), std::vector<std::string>{"file:///tmp/http://x"});
}

} // namespace companion::testing
