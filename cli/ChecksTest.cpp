#include "cli/Checks.h"
#include "platform/testing/FakeInterfaceAddresses.h"

#include <gmock/gmock.h>

namespace companion::cli::testing {

using namespace companion::testing;
using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

static std::string told(const Check& check)
{
    return markText(check.mark) + " " + checkLine(check);
}

class InterfaceCheckTest : public ::testing::Test {
protected:
    std::string check(const std::optional<std::string>& panel = std::nullopt,
        const std::optional<std::string>& chosen = std::nullopt)
    {
        return told(interfaceCheck(addresses, rule, chosen, panel));
    }

    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule rule;
};

TEST_F(InterfaceCheckTest, RuleThatChoseTheInterfaceIsNamed)
{
    EXPECT_EQ(check(), "ok network interface: en0 (has the default route) with 192.168.1.5");
    EXPECT_EQ(check("192.168.1.20"), "ok network interface: en0 (leads to 192.168.1.20) with 192.168.1.5");
    EXPECT_EQ(
        check("192.168.1.20", "en0"), "ok network interface: en0 (chosen by --interface) with 192.168.1.5");
}

TEST_F(InterfaceCheckTest, NoRouteFailsAndTheInterfacesThatThereAreAreListed)
{
    rule.name = "";
    addresses.entries->push_back({"en0", NumericAddress{AddressFamily::ipv4, "10.0.0.7"}});
    addresses.entries->push_back({"en7", NumericAddress{AddressFamily::ipv6, "fe80::7"}});
    EXPECT_EQ(check(),
        "fail network interface: none has a default route - connect to the panel's network, or "
        "choose one with --interface (interfaces with an IPv4 address: lo0, en0)");
    EXPECT_THAT(check("192.168.1.20"), StartsWith("fail network interface: none leads to 192.168.1.20 - "));
}

TEST_F(InterfaceCheckTest, InterfaceWithoutAnAddressFails)
{
    addresses.entries->push_back({"en7", NumericAddress{AddressFamily::ipv6, "fe80::7"}});
    rule.name = "en7";
    EXPECT_THAT(
        check(), StartsWith("fail network interface: en7 (has the default route) has no IPv4 address - "));
    rule.name = "en9";
    EXPECT_THAT(check(std::nullopt, "en9"),
        StartsWith(
            "fail network interface: en9 (chosen by --interface) does not exist or has no address - "));
    addresses.entries.reset();
    EXPECT_THAT(check(), HasSubstr("IPv4 address: none"));
}

TEST_F(InterfaceCheckTest, LoopbackIsOnlyGoodForAPanelOnIt)
{
    rule.name = "lo0";
    EXPECT_THAT(
        check(), StartsWith("warn network interface: lo0 (has the default route) with 127.0.0.1 - no panel"));
    EXPECT_THAT(check("192.168.1.20", "lo0"), StartsWith("warn "));
    EXPECT_THAT(check("127.0.0.2"), StartsWith("ok "));
}

TEST(MdnsDaemonCheckTest, StatesAreToldApart)
{
    EXPECT_EQ(
        told(mdnsDaemonCheck({MdnsDaemonState::running, "avahi 0.8"})), "ok mDNS daemon: avahi 0.8 runs");
    EXPECT_EQ(told(mdnsDaemonCheck({MdnsDaemonState::noDaemon, "x"})),
        "fail mDNS daemon: no mDNS daemon runs (avahi-daemon) - install avahi-daemon and start it: sudo systemctl "
        "start avahi-daemon");
    EXPECT_THAT(told(mdnsDaemonCheck({MdnsDaemonState::noBus, "no file"})),
        StartsWith("fail mDNS daemon: no system bus to reach the mDNS daemon over (no file) - "));
    EXPECT_THAT(told(mdnsDaemonCheck({MdnsDaemonState::silentBus, ""})),
        StartsWith("fail mDNS daemon: the system bus does not answer - "));
    EXPECT_EQ(told(mdnsDaemonCheck({MdnsDaemonState::silentDaemon, ""})),
        "fail mDNS daemon: the mDNS daemon does not answer (avahi-daemon) - restart it: sudo systemctl restart "
        "avahi-daemon");
}

TEST(PanelsCheckTest, PanelsThatAreSeenAreListed)
{
    const std::vector<PanelName> panels{{"M", "Room", "x", "10.0.0.1"}, {"M", "Hall", "y", "10.0.0.2"}};
    EXPECT_EQ(told(panelsCheck(panels, 0, {}, "")), "ok panels: Room (10.0.0.1), Hall (10.0.0.2)");
    EXPECT_EQ(told(panelsCheck(panels, 1, {std::nullopt, "Hall"}, "")),
        "ok panels: Room (10.0.0.1), Hall (10.0.0.2), beside 1 other AirPlay service");
    EXPECT_THAT(
        told(panelsCheck(panels, 0, {"10.0.0.3", std::nullopt}, "")), StartsWith("warn panels: Room"));
    EXPECT_THAT(told(panelsCheck(panels, 0, {std::nullopt, "Attic"}, "")),
        StartsWith(
            "fail panels: Room (10.0.0.1), Hall (10.0.0.2); none is called \"Attic\" - check that the panel is on"));
}

TEST(PanelsCheckTest, NoPanelIsAWarning)
{
    EXPECT_EQ(told(panelsCheck({}, 2, {}, "")),
        "warn panels: none found, beside 2 other AirPlay services - check that the panel is on and in this "
        "network, and that multicast (UDP port 5353) is not blocked");
    EXPECT_THAT(told(panelsCheck({}, 0, {}, "no bus")), StartsWith("warn panels: not searched for - "));
}

TEST(PortCheckTest, PortAnswersOrNot)
{
    EXPECT_EQ(told(portCheck({"10.0.0.1", 5000, ""})), "ok panel's port 5000: 10.0.0.1 answers");
    EXPECT_EQ(told(portCheck({"10.0.0.1", 5505, "Connection refused"})),
        "fail panel's port 5505: 10.0.0.1: Connection refused - no service listens there: restart the panel, or "
        "check its address");
    EXPECT_THAT(told(portCheck({"10.0.0.1", 5505, "no answer"})), HasSubstr("check that the panel is on"));
    EXPECT_THAT(told(noPortCheck()), StartsWith("warn panel's ports: not checked"));
}

TEST(TouchPortCheckTest, HolderIsNamedAndOursIsFine)
{
    EXPECT_EQ(told(touchPortCheck(std::nullopt, {})), "ok UDP port 41863: free");
    EXPECT_EQ(told(touchPortCheck("Address already in use", {{"socat", 12}})),
        "fail UDP port 41863: held by socat (process 12) - stop that program: only one can receive touches");
    EXPECT_EQ(told(touchPortCheck("Address already in use", {{"panel-companion", 12}})),
        "ok UDP port 41863: held by panel-companion (process 12), which listens for touches");
    EXPECT_THAT(told(touchPortCheck("Address already in use", {{"panel-companio", 12}})), StartsWith("fail"));
    EXPECT_THAT(told(touchPortCheck("Address already in use", {})),
        StartsWith("fail UDP port 41863: held by a program that this user may not see - "));
    EXPECT_EQ(told(touchPortCheck("Permission denied", {})), "fail UDP port 41863: Permission denied");
}

TEST(TouchesCheckTest, FirewallCommandsAreNamed)
{
    EXPECT_EQ(told(touchesCheck(697ms, "10.0.0.1", 15s, FirewallProfiles::none)),
        "ok touches: arrive from 10.0.0.1, the first after 0.697 s");
    const std::string none = told(touchesCheck(std::nullopt, "", 15s, FirewallProfiles::none));
    EXPECT_THAT(none, StartsWith("fail touches: none within 15 s - a firewall is the usual reason: "));
    EXPECT_THAT(none, HasSubstr("sudo ufw allow 41863/udp"));
    EXPECT_THAT(none, HasSubstr("sudo firewall-cmd --permanent --add-port=41863/udp"));
    const std::string named = told(touchesCheck(std::nullopt, "", 15s, FirewallProfiles::installed));
    EXPECT_THAT(named, HasSubstr("\"sudo ufw allow panel-companion\""));
    EXPECT_THAT(named, HasSubstr("\"sudo firewall-cmd --permanent --add-service=panel-companion && sudo"));
    EXPECT_EQ(told(noTouchesCheck("Address already in use")),
        "warn touches: not checked, since another program has the port");
    EXPECT_EQ(told(noTouchesCheck("Permission denied")), "warn touches: not checked: Permission denied");
}

TEST(DisplayCheckTest, DisplaysAreToldApart)
{
    using X = DisplayFacts::X;
    EXPECT_EQ(told(displayCheck({X::usable, ":1", ""})),
        "ok display: X display :1; Touches are injected with the XTEST extension of the X server");
    EXPECT_EQ(told(displayCheck({X::usable, ":1", "wayland-0"})),
        "warn display: Wayland display wayland-0, X display :1; On Wayland touches reach X11 programs only; an X11 "
        "session has no such limit - install xdg-desktop-portal and its backend for this desktop, or log in to an X11 session");
    EXPECT_EQ(told(displayCheck({X::usable, ":1", "wayland-0", InputWay::portal})),
        "ok display: Wayland display wayland-0; Touches are injected through the desktop's RemoteDesktop portal, which "
        "asks when touch is turned on");
    EXPECT_EQ(told(displayCheck({X::none, "", "wayland-0", InputWay::virtualPointer})),
        "ok display: Wayland display wayland-0; Touches are injected with the compositor's virtual pointer");
    EXPECT_EQ(told(displayCheck({X::none, "", ""})),
        "warn display: none - panel-companion needs one; panelctl does not");
    EXPECT_THAT(told(displayCheck({X::none, "", "wayland-0"})),
        StartsWith("warn display: Wayland display wayland-0 without X - "));
    EXPECT_THAT(told(displayCheck({X::cannotOpen, ":7", ""})),
        StartsWith("fail display: X display :7 cannot be opened"));
    EXPECT_THAT(
        told(displayCheck({X::silent, ":7", ""})), StartsWith("fail display: X display :7 does not answer"));
    EXPECT_THAT(
        told(displayCheck({X::noXTest, ":7", ""})), StartsWith("fail display: X display :7 has no XTEST"));
}

TEST(CheckTest, SummaryCountsTheMarks)
{
    EXPECT_EQ(summaryText({{"a", Mark::ok, "", ""}, {"b", Mark::warn, "", ""}, {"c", Mark::fail, "", ""},
                  {"d", Mark::ok, "", ""}}),
        "4 checks: 2 ok, 1 warning, 1 failed");
    EXPECT_EQ(summaryText({}), "0 checks: 0 ok, 0 warnings, 0 failed");
}

TEST(CheckTest, JsonTellsAdviceOrNull)
{
    EXPECT_EQ(jsonText(checkJson({"a", Mark::warn, "b", "c"})),
        R"({"check":"a","mark":"warn","found":"b","advice":"c"})");
    EXPECT_EQ(jsonText(checkJson(versionCheck("panelctl 1", "Debian"))),
        R"({"check":"version","mark":"ok","found":"panelctl 1 on Debian","advice":null})");
}

} // namespace companion::cli::testing
