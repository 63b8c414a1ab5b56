#include "tests/support/NetworkNamespace.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace companion::testing {

class NamespaceRemedyTest : public ::testing::Test {
protected:
    NamespaceRemedyTest()
    {
        std::string name = std::filesystem::temp_directory_path() / "kernel-XXXXXX";
        settings = mkdtemp(name.data());
    }
    ~NamespaceRemedyTest() override { std::filesystem::remove_all(settings); }

    void set(const std::string& name, int value) const { std::ofstream(settings / name) << value << '\n'; }

    std::filesystem::path settings;
};

TEST_F(NamespaceRemedyTest, AppArmorsRestrictionIsNamed)
{
    set("apparmor_restrict_unprivileged_userns", 1);
    EXPECT_EQ(namespaceRemedy(settings),
        " (works as root, or after \"sudo sysctl kernel.apparmor_restrict_unprivileged_userns=0\")");
}

TEST_F(NamespaceRemedyTest, DebiansOlderSwitchIsNamed)
{
    set("apparmor_restrict_unprivileged_userns", 0);
    set("unprivileged_userns_clone", 0);
    EXPECT_EQ(namespaceRemedy(settings),
        " (works as root, or after \"sudo sysctl kernel.unprivileged_userns_clone=1\")");
}

TEST_F(NamespaceRemedyTest, OtherwiseOnlyRootHelps)
{
    set("unprivileged_userns_clone", 1);
    EXPECT_EQ(namespaceRemedy(settings), " (works as root)");
}

} // namespace companion::testing
