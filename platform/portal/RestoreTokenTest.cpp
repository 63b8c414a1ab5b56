#include "platform/portal/RestoreToken.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <sys/stat.h>

namespace companion::testing {

class RestoreTokenTest : public ::testing::Test {
protected:
    RestoreTokenTest()
    {
        std::string name = ::testing::TempDir() + "token.XXXXXX";
        folder = mkdtemp(name.data());
        file = folder / "state/panel-companion/screen-access";
    }
    ~RestoreTokenTest() override { std::filesystem::remove_all(folder); }

    std::filesystem::path folder;
    std::filesystem::path file;
};

TEST_F(RestoreTokenTest, WithoutAFileItIsKeptInMemory)
{
    RestoreToken token;
    EXPECT_EQ(token.value(), "");
    EXPECT_EQ(token.set("a1"), std::nullopt);
    EXPECT_EQ(token.value(), "a1");
    EXPECT_FALSE(token.isKeptOnDisk());
}

TEST_F(RestoreTokenTest, TheNextRunReadsTheFileOfTheLastOne)
{
    EXPECT_EQ(RestoreToken(file).set("a1"), std::nullopt);
    EXPECT_EQ(RestoreToken(file).value(), "a1");
}

TEST_F(RestoreTokenTest, OnlyThisUserCanReadTheFile)
{
    std::filesystem::create_directories(file.parent_path());
    const mode_t before = umask(0);
    RestoreToken(file).set("a1");
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(RestoreTokenTest, NothingRemovesTheFile)
{
    RestoreToken token(file);
    token.set("a1");
    EXPECT_EQ(token.set(""), std::nullopt);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(RestoreTokenTest, AFileThatCannotBeWrittenIsAnErrorAndTheValueIsKept)
{
    std::filesystem::create_directories(file.parent_path() / "screen-access.new");
    RestoreToken token(file);
    EXPECT_EQ(token.set("a1"), file.string() + ".new: Is a directory");
    EXPECT_EQ(token.value(), "a1");
}

} // namespace companion::testing
