#include "tests/avahi/ServiceBrowsing.h"
#include "tests/support/NetworkNamespace.h"

#include <cstdlib>
#include <QCoreApplication>

namespace companion::testing {
std::optional<std::string> reasonForNoNetwork;
PrivateBus* computerBus = nullptr;
} // namespace companion::testing

int main(int argc, char** argv)
{
    using namespace companion::testing;
    ::testing::InitGoogleTest(&argc, argv);
    if (!::testing::GTEST_FLAG(list_tests))
        reasonForNoNetwork = enterNetworkNamespace();
    QCoreApplication application(argc, argv);
    PrivateBus bus;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().c_str(), 1);
    computerBus = &bus;
    return RUN_ALL_TESTS();
}
