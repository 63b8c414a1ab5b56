#include "panel/LocalAddress.h"

#include "platform/testing/FakeInterfaceAddresses.h"

#include <gtest/gtest.h>

namespace companion::testing {

namespace {

InterfaceAddress ipv4(const std::string& interfaceName, const std::string& text)
{
    return {interfaceName, NumericAddress{AddressFamily::ipv4, text}};
}

std::string localAddressAmong(std::vector<InterfaceAddress> entries, const std::string& interfaceName = "en0")
{
    FakeInterfaceAddresses addresses;
    addresses.entries = std::move(entries);
    return getLocalIPAddress(addresses, interfaceName);
}

} // namespace

TEST(LocalAddressTest, IsTheIPv4AddressOfTheNamedInterface)
{
    EXPECT_EQ(
        localAddressAmong({ipv4("lo0", "127.0.0.1"), ipv4("en0", "10.27.3.91"), ipv4("en1", "10.27.4.8")}),
        "10.27.3.91");
    EXPECT_EQ(
        localAddressAmong({ipv4("en0", "10.27.3.91"), ipv4("wlp3s0", "10.27.4.8")}, "wlp3s0"), "10.27.4.8");
}

TEST(LocalAddressTest, LastOfTwoIPv4AddressesWins)
{
    EXPECT_EQ(localAddressAmong({ipv4("en0", "10.27.3.91"), ipv4("en1", "10.27.4.8"),
                  ipv4("en0", "169.254.7.7"), ipv4("en1", "10.27.4.9")}),
        "169.254.7.7");
}

TEST(LocalAddressTest, LastAddressWinsEvenWithoutAText)
{
    EXPECT_EQ(localAddressAmong({ipv4("en0", "10.27.3.91"), ipv4("en0", "")}), "");
}

TEST(LocalAddressTest, OtherFamiliesAreSkipped)
{
    EXPECT_EQ(
        localAddressAmong({ipv4("en0", "10.27.3.91"), {"en0", NumericAddress{AddressFamily::ipv6, "fe80::1"}},
            {"en0", NumericAddress{AddressFamily::other, "0:11:22:33:44:55"}}}),
        "10.27.3.91");
    EXPECT_EQ(localAddressAmong({{"en0", NumericAddress{AddressFamily::ipv6, "fe80::1"}}}), "");
}

TEST(LocalAddressTest, NameIsMatchedExactly)
{
    EXPECT_EQ(
        localAddressAmong({ipv4("EN0", "10.27.3.91"), ipv4("en01", "10.27.3.92"), ipv4("en", "10.27.3.93"),
            ipv4("en0:1", "10.27.3.94"), ipv4(" en0", "10.27.3.95"), ipv4("en1", "10.27.3.96")}),
        "");
}

TEST(LocalAddressTest, IsEmptyWithoutAListAndWithAnEmptyOne)
{
    FakeInterfaceAddresses addresses;
    addresses.entries.reset();
    EXPECT_EQ(getLocalIPAddress(addresses, "en0"), "");
    EXPECT_EQ(localAddressAmong({}), "");
}

TEST(LocalAddressDeathTest, EntryWithoutAnAddressIsFatalOnAnyInterface)
{
    const char* message = "Fatal error: An interface address entry has no address.";
    EXPECT_DEATH(localAddressAmong({{"en0", std::nullopt}}), message);
    EXPECT_DEATH(localAddressAmong({ipv4("en0", "10.27.3.91"), {"utun4", std::nullopt}}), message);
}

} // namespace companion::testing
