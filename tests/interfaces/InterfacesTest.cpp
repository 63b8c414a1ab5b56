#include "platform/posix/PosixInterfaceAddresses.h"
#include "platform/posix/RoutedInterfaceName.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/NetworkNamespace.h"

#include <cstdlib>

#include <gmock/gmock.h>

namespace companion::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

/// Each test has a computer without any interface but "lo" to itself.
class InterfacesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!isInstalled("ip"))
            GTEST_SKIP() << "ip (iproute2) is not installed";
        if (const auto reason = enterNetworkNamespace())
            GTEST_SKIP() << *reason;
    }

    static void ip(const std::string& arguments)
    {
        ASSERT_EQ(std::system(("ip " + arguments).c_str()), 0) << "ip " << arguments;
    }

    /// One end of a virtual cable, up, without an address if none is given.
    static void plugIn(const std::string& name, const std::string& address = "")
    {
        ip("link add name " + name + " type veth peer name far-" + name);
        ip("link set " + name + " up");
        ip("link set far-" + name + " up");
        if (!address.empty())
            ip("addr add " + address + " dev " + name);
    }

    std::vector<InterfaceAddress> entries() const { return m_addresses.list().value(); }

    std::vector<std::string> ipv4AddressesOf(const std::string& name) const
    {
        std::vector<std::string> texts;
        for (const InterfaceAddress& entry : entries()) {
            if (entry.interfaceName == name && entry.address->family == AddressFamily::ipv4)
                texts.push_back(entry.address->text);
        }
        return texts;
    }

    std::vector<std::string> names() const
    {
        std::vector<std::string> all;
        for (const InterfaceAddress& entry : entries())
            all.push_back(entry.interfaceName);
        return all;
    }

    PosixInterfaceAddresses m_addresses;
    RoutedInterfaceName m_rule;
};

TEST_F(InterfacesTest, AnInterfaceWithOneAddressHasItInDottedForm)
{
    plugIn("en0", "192.168.7.5/24");
    EXPECT_THAT(ipv4AddressesOf("en0"), ElementsAre("192.168.7.5"));
    EXPECT_THAT(ipv4AddressesOf("lo"), ElementsAre("127.0.0.1"));
}

TEST_F(InterfacesTest, OfTwoAddressesTheOneAddedLaterComesLast)
{
    plugIn("en0", "192.168.7.5/24");
    ip("addr add 10.0.2.15/24 dev en0");
    EXPECT_THAT(ipv4AddressesOf("en0"), ElementsAre("192.168.7.5", "10.0.2.15"));
}

TEST_F(InterfacesTest, AnInterfaceWithoutAnAddressIsListedByItsLinkOnly)
{
    plugIn("en0");
    EXPECT_THAT(names(), Contains("en0"));
    EXPECT_THAT(ipv4AddressesOf("en0"), IsEmpty());
}

TEST_F(InterfacesTest, AnotherInterfacesAddressIsListedUnderItsOwnName)
{
    plugIn("en1", "192.168.7.5/24");
    EXPECT_THAT(ipv4AddressesOf("en0"), IsEmpty());
    EXPECT_THAT(ipv4AddressesOf("en1"), ElementsAre("192.168.7.5"));
}

TEST_F(InterfacesTest, AnIpv6AddressIsListedAsOne)
{
    plugIn("en0");
    ip("addr add fd00::7/64 dev en0");
    std::vector<std::string> texts;
    for (const InterfaceAddress& entry : entries()) {
        if (entry.interfaceName == "en0" && entry.address->family == AddressFamily::ipv6)
            texts.push_back(entry.address->text);
    }
    EXPECT_THAT(texts, Contains("fd00::7"));
}

TEST_F(InterfacesTest, ATunnelWithoutAnAddressIsLeftOutAndNoEntryIsWithoutOne)
{
    if (std::system("ip tuntap add tun7 mode tun") != 0)
        GTEST_SKIP() << "no tun device can be made here";
    plugIn("en0");
    EXPECT_THAT(names(), Not(Contains("tun7")));
    for (const InterfaceAddress& entry : entries())
        EXPECT_TRUE(entry.address.has_value()) << entry.interfaceName;
}

TEST_F(InterfacesTest, ATunnelWithAnAddressIsListed)
{
    if (std::system("ip tuntap add tun7 mode tun") != 0)
        GTEST_SKIP() << "no tun device can be made here";
    ip("addr add 10.8.0.2/24 dev tun7");
    EXPECT_THAT(ipv4AddressesOf("tun7"), ElementsAre("10.8.0.2"));
}

TEST_F(InterfacesTest, AnInterfaceThatVanishesBetweenTwoLookupsIsGoneAtTheSecond)
{
    plugIn("en0", "192.168.7.5/24");
    EXPECT_THAT(names(), Contains("en0"));
    EXPECT_EQ(m_rule.interfaceNameTowards("192.168.7.20"), "en0");
    ip("link delete en0");
    EXPECT_THAT(names(), Not(Contains("en0")));
    EXPECT_EQ(m_rule.interfaceNameTowards("192.168.7.20"), "");
}

TEST_F(InterfacesTest, TheChosenInterfaceIsTakenWhateverTheRoutesSay)
{
    plugIn("en0", "192.168.7.5/24");
    const RoutedInterfaceName chosen("wlan7");
    EXPECT_EQ(chosen.interfaceNameTowards("192.168.7.20"), "wlan7");
    EXPECT_EQ(chosen.interfaceNameTowards(std::nullopt), "wlan7");
}

TEST_F(InterfacesTest, ThePanelIsReachedByTheSecondInterface)
{
    plugIn("en0", "192.168.7.5/24");
    ip("route add default via 192.168.7.1");
    plugIn("en1", "172.16.3.9/24");
    EXPECT_EQ(m_rule.interfaceNameTowards("172.16.3.20"), "en1");
    EXPECT_EQ(m_rule.interfaceNameTowards("172.16.4.20"), "en0");
}

TEST_F(InterfacesTest, TheLongerPrefixDecides)
{
    plugIn("en0", "10.0.0.5/8");
    plugIn("en1", "172.16.3.9/24");
    ip("route add 10.9.0.0/16 dev en1");
    EXPECT_EQ(m_rule.interfaceNameTowards("10.8.0.20"), "en0");
    EXPECT_EQ(m_rule.interfaceNameTowards("10.9.0.20"), "en1");
}

TEST_F(InterfacesTest, TheRouteOfTheLowerMetricDecidesBetweenTwoInterfacesOfOneNetwork)
{
    plugIn("en0", "192.168.7.5/24");
    plugIn("wlan0", "192.168.7.6/24");
    ip("route replace 192.168.7.0/24 dev en0 metric 600");
    ip("route replace 192.168.7.0/24 dev wlan0 metric 100");
    ip("route del 192.168.7.0/24 dev en0 metric 0");
    ip("route del 192.168.7.0/24 dev wlan0 metric 0");
    EXPECT_EQ(m_rule.interfaceNameTowards("192.168.7.20"), "wlan0");
}

TEST_F(InterfacesTest, AnInterfaceWithoutAnAddressOfItsOwnIsNeverTheOne)
{
    plugIn("en0", "192.168.7.5/24");
    plugIn("en1");
    ip("route add 10.9.0.0/16 dev en1");
    EXPECT_EQ(m_rule.interfaceNameTowards("10.9.0.20"), "en0") << "whose address the packets carry";
}

TEST_F(InterfacesTest, APanelOnThisComputerIsReachedByTheInterfaceOfItsAddress)
{
    plugIn("en0", "192.168.7.5/24");
    EXPECT_EQ(m_rule.interfaceNameTowards("127.0.0.2"), "lo");
    EXPECT_EQ(m_rule.interfaceNameTowards("192.168.7.5"), "en0");
}

TEST_F(InterfacesTest, WithoutAPanelTheDefaultRoutesInterfaceIsTaken)
{
    plugIn("en0", "192.168.7.5/24");
    plugIn("en1", "172.16.3.9/24");
    ip("route add default via 172.16.3.1");
    EXPECT_EQ(m_rule.interfaceNameTowards(std::nullopt), "en1");
}

TEST_F(InterfacesTest, OfTwoDefaultRoutesTheOneOfTheLowerMetricIsTaken)
{
    plugIn("en0", "192.168.7.5/24");
    plugIn("en1", "172.16.3.9/24");
    ip("route add default dev en0 metric 600");
    ip("route add default dev en1 metric 100");
    EXPECT_EQ(m_rule.interfaceNameTowards(std::nullopt), "en1");
    ip("route add default dev en0 metric 50");
    EXPECT_EQ(m_rule.interfaceNameTowards(std::nullopt), "en0");
}

TEST_F(InterfacesTest, AnUnreachableDefaultRouteIsNone)
{
    plugIn("en0", "192.168.7.5/24");
    ip("route add unreachable default");
    EXPECT_EQ(m_rule.interfaceNameTowards(std::nullopt), "");
}

TEST_F(InterfacesTest, APanelThatNoRouteLeadsToMeansTheDefaultRoute)
{
    plugIn("en0", "192.168.7.5/24");
    ip("route add default dev en0");
    ip("route add unreachable 172.16.3.0/24");
    EXPECT_EQ(m_rule.interfaceNameTowards("172.16.3.20"), "en0");
}

TEST_F(InterfacesTest, APanelThatIsNoDottedIpv4AddressMeansTheDefaultRoute)
{
    plugIn("en0", "192.168.7.5/24");
    plugIn("en1", "172.16.3.9/24");
    ip("route add default dev en1");
    for (const std::string panel :
        {"", "panel.local", "192.168.7", "192.168.7.300", "192.168.7.20 ", "fe80::1"})
        EXPECT_EQ(m_rule.interfaceNameTowards(panel), "en1") << panel;
}

TEST_F(InterfacesTest, WithoutAnyRouteThereIsNoName)
{
    EXPECT_EQ(m_rule.interfaceNameTowards(std::nullopt), "");
    EXPECT_EQ(m_rule.interfaceNameTowards("192.168.7.20"), "");
}

} // namespace
} // namespace companion::testing
