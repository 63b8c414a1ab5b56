#include "tests/simulator/SimulatorProcess.h"
#include "tests/support/AvahiDaemon.h"
#include "tests/support/NetworkNamespace.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>

#include <csignal>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;

std::optional<std::string> reasonNotToRun; ///< set before the tests

// As avahi-browse prints them: what is not plain is "\" and its decimal value.
constexpr auto room = R"(Meridian\03265\124Room\1247F000001)";
constexpr auto secondRoom = R"(Meridian\03265\124Room\032\0402\041\1247F000001)";

class AnnouncementTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (reasonNotToRun)
            GTEST_SKIP() << *reasonNotToRun;
        if (const auto reason = AvahiDaemon::reasonNotToRun())
            GTEST_SKIP() << *reason;
        if (!isInstalled("avahi-browse"))
            GTEST_SKIP() << "avahi-browse is not installed";
    }

    void startDaemon()
    {
        bus.start();
        avahi.start();
    }

    SimulatorProcess startPanel(const std::string& name = "Room")
    {
        return SimulatorProcess({"--name", name}, "127.0.0.1", bus.environment());
    }

    ChildProcess browse()
    {
        return ChildProcess({"avahi-browse", "-pr", "_airplay._tcp"}, bus.environment());
    }

    static std::string added(const std::string& name) { return "+;lo;IPv4;" + name + ";"; }
    static std::string resolved(const std::string& name) { return "=;lo;IPv4;" + name + ";"; }
    static std::string removed(const std::string& name) { return "-;lo;IPv4;" + name + ";"; }

    PrivateBus bus;
    AvahiDaemon avahi{bus};
};

TEST_F(AnnouncementTest, PanelIsAnnouncedWithItsServicePort)
{
    startDaemon();
    SimulatorProcess panel = startPanel();
    ChildProcess browser = browse();
    ASSERT_TRUE(browser.waitForOutput(resolved(room))) << browser.output();
    EXPECT_TRUE(browser.waitForOutput(";127.0.0.1;" + std::to_string(panel.servicePort()) + ";"))
        << browser.output();
    EXPECT_TRUE(panel.process().waitForOutput("announced as Meridian 65|Room|7F000001\n"));
    EXPECT_TRUE(panel.state()["announced"].toBool());
    EXPECT_EQ(panel.state()["announcedAs"].toString(), "Meridian 65|Room|7F000001");
}

TEST_F(AnnouncementTest, SignalWithdrawsTheAnnouncement)
{
    startDaemon();
    SimulatorProcess panel = startPanel();
    ChildProcess browser = browse();
    ASSERT_TRUE(browser.waitForOutput(added(room)));
    panel.process().sendSignal(SIGTERM);
    EXPECT_EQ(panel.process().waitForExit(), 0);
    EXPECT_TRUE(browser.waitForOutput(removed(room)));
}

TEST_F(AnnouncementTest, DaemonThatStartsLaterIsUsed)
{
    bus.start();
    SimulatorProcess panel = startPanel();
    ASSERT_TRUE(panel.process().waitForOutput("not announced for now: no mDNS daemon\n"));
    avahi.start();
    EXPECT_TRUE(panel.process().waitForOutput("announced as Meridian 65|Room|7F000001\n"));
    ChildProcess browser = browse();
    EXPECT_TRUE(browser.waitForOutput(added(room)));
}

TEST_F(AnnouncementTest, BusThatStartsLaterIsUsed)
{
    SimulatorProcess panel = startPanel();
    ASSERT_TRUE(panel.process().waitForOutput("not announced for now: no system bus\n"));
    startDaemon();
    EXPECT_TRUE(panel.process().waitForOutput("announced as Meridian 65|Room|7F000001\n"));
}

TEST_F(AnnouncementTest, DaemonThatRestartsHearsOfThePanelAgain)
{
    startDaemon();
    SimulatorProcess panel = startPanel();
    ASSERT_TRUE(panel.process().waitForOutput("announced as "));
    avahi.crash();
    ASSERT_TRUE(panel.process().waitForOutput("not announced for now: the mDNS daemon has gone\n"));
    EXPECT_FALSE(panel.state()["announced"].toBool());
    avahi.start();
    ChildProcess browser = browse();
    EXPECT_TRUE(browser.waitForOutput(added(room)));
}

TEST_F(AnnouncementTest, BusThatRestartsIsConnectedToAgain)
{
    startDaemon();
    SimulatorProcess panel = startPanel();
    ASSERT_TRUE(panel.process().waitForOutput("announced as "));
    bus.stop();
    ASSERT_TRUE(panel.process().waitForOutput("not announced for now: "));
    avahi.stop(); // it ends with its bus
    startDaemon();
    ChildProcess browser = browse();
    EXPECT_TRUE(browser.waitForOutput(added(room)));
}

TEST_F(AnnouncementTest, MissingBusIsLoggedOnce)
{
    SimulatorProcess panel = startPanel();
    ASSERT_TRUE(panel.process().waitForOutput("not announced for now: no system bus\n"));
    EXPECT_FALSE(panel.process().waitForOutput("no system bus\npanel-simulator: ", 2500ms));
}

TEST_F(AnnouncementTest, SilentBusIsLoggedAndThePanelAnswersMeanwhile)
{
    const int silent = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const std::string path = ::testing::TempDir() + "/silent-bus-" + std::to_string(getpid());
    sockaddr_un name{AF_UNIX, {}};
    path.copy(name.sun_path, sizeof name.sun_path - 1);
    ASSERT_EQ(bind(silent, reinterpret_cast<const sockaddr*>(&name), sizeof name), 0);
    ASSERT_EQ(listen(silent, 8), 0);
    SimulatorProcess panel({}, "127.0.0.1", {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + path}});
    EXPECT_EQ(panel.ping().body, "OK");
    EXPECT_TRUE(panel.process().waitForOutput("not announced for now: the system bus does not reply\n"));
    panel.process().sendSignal(SIGTERM);
    EXPECT_EQ(panel.process().waitForExit(), 0);
    close(silent);
    unlink(path.c_str());
}

TEST_F(AnnouncementTest, SecondPanelOfOneNameIsNumberedAndKeepsTheForm)
{
    startDaemon();
    SimulatorProcess first = startPanel();
    ASSERT_TRUE(first.process().waitForOutput("announced as "));
    SimulatorProcess second = startPanel();
    EXPECT_TRUE(second.process().waitForOutput("the name Meridian 65|Room|7F000001 is taken"));
    EXPECT_TRUE(second.process().waitForOutput("announced as Meridian 65|Room (2)|7F000001\n"));
    ChildProcess browser = browse();
    EXPECT_TRUE(browser.waitForOutput(added(room)));
    EXPECT_TRUE(browser.waitForOutput(added(secondRoom))) << browser.output();
    EXPECT_EQ(second.state()["announcedAs"].toString(), "Meridian 65|Room (2)|7F000001");
}

TEST_F(AnnouncementTest, SixtyThreeBytesOfUtf8AreAnnounced)
{
    startDaemon();
    SimulatorProcess panel = startPanel("Größe " + std::string(34, 'n'));
    EXPECT_TRUE(panel.process().waitForOutput(
        "announced as Meridian 65|Größe " + std::string(34, 'n') + "|7F000001\n"))
        << panel.process().output();
}

} // namespace
} // namespace companion::testing

int main(int argc, char** argv)
{
    companion::testing::reasonNotToRun = companion::testing::enterNetworkNamespace();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
