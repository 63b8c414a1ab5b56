#include "tests/panelctl/PanelctlTest.h"
#include "tests/support/NetworkNamespace.h"

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    if (!::testing::GTEST_FLAG(list_tests))
        companion::testing::reasonForNoNetwork = companion::testing::enterNetworkNamespace();
    return RUN_ALL_TESTS();
}
