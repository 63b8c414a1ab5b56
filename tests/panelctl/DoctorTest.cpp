#include "tests/panelctl/PanelctlTest.h"
#include "tests/support/AvahiDaemon.h"
#include "tests/support/XvfbServer.h"

#include <csignal>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion::testing {

using ::testing::ContainsRegex;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;
using namespace std::chrono_literals;

/// Takes connections to a Unix socket and never says a word.
class SilentServer {
public:
    explicit SilentServer(const std::string& path)
        : m_fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
        if (bind(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 || listen(m_fd, 5) != 0)
            throw std::runtime_error("no socket at " + path);
    }
    ~SilentServer() { close(m_fd); }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;

private:
    int m_fd;
};

class PanelctlDoctorTest : public PanelctlTest {
protected:
    /// The marks by the checks' names.
    static std::map<std::string, std::string> marks(const Ending& ending)
    {
        std::map<std::string, std::string> marks;
        for (const auto& check : ending.json()["checks"].toArray()) {
            const QJsonObject object = check.toObject();
            marks[object["check"].toString().toStdString()] = object["mark"].toString().toStdString();
        }
        return marks;
    }
};

TEST_F(PanelctlDoctorTest, WithNothingAtAllItStillTellsEveryCheck)
{
    const Ending ending = run({"doctor", "--timeout", "0.5"});
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.output, StartsWith("ok    version: panelctl "));
    EXPECT_THAT(
        ending.output, HasSubstr("\nfail  mDNS daemon: no system bus to reach the mDNS daemon over ("));
    EXPECT_THAT(ending.output, HasSubstr("\nwarn  panels: not searched for - "));
    EXPECT_THAT(ending.output, HasSubstr("\nfail  network interface: none has a default route - "));
    EXPECT_THAT(ending.output, HasSubstr("\nwarn  panel's ports: not checked"));
    EXPECT_THAT(ending.output, HasSubstr("\nok    UDP port 41863: free\n"));
    EXPECT_THAT(ending.output, HasSubstr("\nwarn  display: none - "));
    EXPECT_THAT(ending.output, EndsWith("\npanelctl: 7 checks: 2 ok, 3 warnings, 2 failed\n"));
    EXPECT_THAT(ending.output, Not(HasSubstr("\x1b"))) << "colour is for terminals";
}

TEST_F(PanelctlDoctorTest, PanelThatIsThereAnswersOnBothPorts)
{
    startPanel();
    const auto told = marks(runAtPanel({"doctor", "--json"}));
    EXPECT_EQ(told.at("panel's port 5000"), "ok");
    EXPECT_EQ(told.at("panel's port 5505"), "ok");
    EXPECT_EQ(told.at("network interface"), "ok");
    EXPECT_EQ(panel->state()["pings"].toObject()["count"].toInt(), 0) << "it is left alone";
}

TEST_F(PanelctlDoctorTest, PanelThatIsNotThereFails)
{
    const Ending ending = runAtPanel({"doctor"});
    EXPECT_THAT(ending.output, HasSubstr("fail  panel's port 5000: 127.0.0.1: Connection refused - "));
    EXPECT_THAT(ending.output, HasSubstr("fail  panel's port 5505: 127.0.0.1: Connection refused - "));
    EXPECT_THAT(run({"doctor", "--panel-address", "10.9.8.7"}).output,
        HasSubstr("fail  panel's port 5000: 10.9.8.7: Network is unreachable - "));
}

TEST_F(PanelctlDoctorTest, HolderOfTheTouchPortIsNamed)
{
    ChildProcess holder(command({"touches"}), environment);
    ASSERT_TRUE(holder.waitForOutput("listening for touches"));
    const Ending ending = run({"doctor", "--touches"});
    EXPECT_THAT(ending.output,
        HasSubstr(
            "fail  UDP port 41863: held by panelctl (process " + std::to_string(holder.pid()) + ") - stop"));
    EXPECT_THAT(ending.output, HasSubstr("warn  touches: not checked"));
    EXPECT_EQ(ending.status, 1);
}

TEST_F(PanelctlDoctorTest, TouchesThatArriveAreTold)
{
    startPanel();
    ChildProcess process(command({"doctor", "--touches", "--panel-address", "127.0.0.1"}), environment);
    ASSERT_TRUE(process.waitForOutput("touch the panel now\n"));
    for (int round = 0; round < 100 && panel->post("/simulator/touch", "DOWN 1 1\n").status != 200; ++round)
        usleep(20'000);
    ASSERT_TRUE(process.waitForExit());
    // In whole milliseconds, of which there may be none.
    EXPECT_THAT(process.output(),
        ContainsRegex("ok    touches: arrive from 127\\.0\\.0\\.1, the first after 0(\\.[0-9]+)? s\n"));
    EXPECT_FALSE(panel->state()["touchTarget"].toObject()["enabled"].toBool(true)) << "switched off again";
}

TEST_F(PanelctlDoctorTest, CtrlCWhileItWaitsForTouchesSwitchesTouchbackOff)
{
    startPanel();
    ChildProcess process(command({"doctor", "--touches", "--panel-address", "127.0.0.1"}), environment);
    const auto isEnabled = [this] { return panel->state()["touchTarget"].toObject()["enabled"].toBool(); };
    ASSERT_TRUE(process.waitForOutput("touch the panel now\n"));
    for (int round = 0; round < 100 && !isEnabled(); ++round)
        usleep(20'000);
    ASSERT_TRUE(isEnabled());
    process.sendSignal(SIGINT);
    EXPECT_EQ(process.waitForExit(), 128 + SIGINT);
    EXPECT_FALSE(isEnabled());
}

TEST_F(PanelctlDoctorTest, SecondCtrlCEndsItAtOnce)
{
    startPanel();
    ChildProcess process(
        command({"doctor", "--touches", "--panel-address", "127.0.0.1", "--timeout", "60"}), environment);
    ASSERT_TRUE(process.waitForOutput("touch the panel now\n"));
    panel->post("/simulator/reply", "touchback silence");
    process.sendSignal(SIGINT);
    EXPECT_FALSE(process.waitForExit(500ms));
    process.sendSignal(SIGINT);
    EXPECT_EQ(process.waitForExit(), 128 + SIGINT);
}

TEST_F(PanelctlDoctorTest, TouchesThatDoNotArriveNameTheFirewallCommands)
{
    const Ending ending = run({"doctor", "--touches", "--timeout", "0.3"});
    EXPECT_THAT(ending.output,
        HasSubstr("fail  touches: none within 0.3 s - a firewall is the usual reason: \"sudo "
                  "ufw allow "));
}

TEST_F(PanelctlDoctorTest, DisplayWithXTestIsFine)
{
    if (!isInstalled("Xvfb"))
        GTEST_SKIP() << "Xvfb is not installed";
    const XvfbServer server;
    environment["DISPLAY"] = server.display();
    EXPECT_THAT(run({"doctor"}).output,
        HasSubstr("ok    display: X display " + server.display()
            + "; Touches are injected with the XTEST extension of the X server\n"));
    environment["WAYLAND_DISPLAY"] = "wayland-7";
    EXPECT_THAT(run({"doctor"}).output, HasSubstr("warn  display: Wayland display wayland-7, X display "));
}

TEST_F(PanelctlDoctorTest, DisplayWithoutXTestFails)
{
    if (!isInstalled("Xvfb"))
        GTEST_SKIP() << "Xvfb is not installed";
    ChildProcess server({"Xvfb", ":7341", "-extension", "XTEST", "-nolisten", "tcp"});
    environment["DISPLAY"] = ":7341";
    Ending ending;
    for (int round = 0; round < 50; ++round) {
        ending = run({"doctor", "--timeout", "2"});
        if (ending.output.find("cannot be opened") == std::string::npos)
            break;
        usleep(100'000);
    }
    EXPECT_THAT(ending.output, HasSubstr("fail  display: X display :7341 has no XTEST extension"));
}

TEST_F(PanelctlDoctorTest, DisplayThatIsNotThereFails)
{
    environment["DISPLAY"] = ":7342";
    EXPECT_THAT(run({"doctor"}).output, HasSubstr("fail  display: X display :7342 cannot be opened - "));
}

TEST_F(PanelctlDoctorTest, DisplayAndBusThatAreSilentDoNotHoldItUp)
{
    const SilentServer bus(folder / "bus");
    environment["DBUS_SYSTEM_BUS_ADDRESS"] = "unix:path=" + (folder / "bus").string();
    // An abstract socket or a file at this place is where an X server of this number listens: see X(7).
    std::filesystem::create_directories("/tmp/.X11-unix");
    const std::string place = "/tmp/.X11-unix/X" + std::to_string(10'000 + getpid() % 50'000);
    std::filesystem::remove(place);
    const SilentServer display(place);
    environment["DISPLAY"] = ":" + std::to_string(10'000 + getpid() % 50'000);

    const auto begin = std::chrono::steady_clock::now();
    const Ending ending = run({"doctor", "--timeout", "0.5"});
    std::filesystem::remove(place);
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.output, HasSubstr("fail  mDNS daemon: the system bus does not answer - "));
    EXPECT_THAT(ending.output, HasSubstr(" does not answer - restart the session\n"));
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 15s);
    EXPECT_EQ(run({"discover", "--seconds", "1"}).output, "panelctl: the system bus does not answer\n");
}

/// With an mDNS daemon on a bus of their own, and the panel announced through it.
class PanelctlDiscoveryTest : public PanelctlDoctorTest {
protected:
    void SetUp() override
    {
        PanelctlTest::SetUp();
        if (IsSkipped())
            return;
        if (const auto reason = AvahiDaemon::reasonNotToRun())
            GTEST_SKIP() << *reason;
        bus.start();
        environment["DBUS_SYSTEM_BUS_ADDRESS"] = bus.address();
    }

    void startAnnouncedPanel()
    {
        avahi.start();
        startPanel({"--name", "Room 204"}, bus.environment());
        ASSERT_TRUE(panel->process().waitForOutput("announced as "));
    }

    PrivateBus bus;
    AvahiDaemon avahi{bus};
};

TEST_F(PanelctlDiscoveryTest, DaemonThatIsSilentIsToldFromAMissingOne)
{
    avahi.start();
    avahi.pause();
    const Ending ending = run({"doctor", "--timeout", "2"});
    EXPECT_THAT(
        ending.output, HasSubstr("fail  mDNS daemon: the mDNS daemon does not answer (avahi-daemon) - "));
}

TEST_F(PanelctlDiscoveryTest, PanelsAreListed)
{
    startAnnouncedPanel();
    const Ending ending = run({"discover", "--seconds", "2"});
    EXPECT_EQ(ending.output, "127.0.0.1        Room 204 (Meridian 65)\n");
    EXPECT_EQ(ending.status, 0);
    const QJsonObject found =
        run({"discover", "--seconds", "2", "--json"}).json()["panels"].toArray().first().toObject();
    EXPECT_EQ(found["name"].toString(), "Room 204");
    EXPECT_EQ(found["address"].toString(), "127.0.0.1");
    EXPECT_EQ(found["model"].toString(), "Meridian 65");
}

TEST_F(PanelctlDiscoveryTest, NameLeadsToThePanelAndEndsTheSearch)
{
    startAnnouncedPanel();
    EXPECT_EQ(run({"ping", "--panel", "Room 204"}).output, "127.0.0.1 answered: OK\n");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(run({"discover", "--seconds", "60", "--panel", "Room 204"}).status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST_F(PanelctlDiscoveryTest, NameThatNobodyHasIsStatus3)
{
    startAnnouncedPanel();
    const Ending ending = run({"ping", "--panel", "Attic", "--timeout", "1"});
    EXPECT_EQ(ending.output, "panelctl: no panel called \"Attic\" announced itself within 1 s\n");
    EXPECT_EQ(ending.status, 3);
}

TEST_F(PanelctlDiscoveryTest, NoPanelIsStatus3)
{
    avahi.start();
    const Ending ending = run({"discover", "--seconds", "1"});
    EXPECT_EQ(ending.output, "panelctl: no panel announced itself within 1 s\n");
    EXPECT_EQ(ending.status, 3);
}

TEST_F(PanelctlDiscoveryTest, MissingDaemonIsToldAtOnce)
{
    const Ending ending = run({"discover", "--seconds", "60"});
    EXPECT_EQ(ending.output, "panelctl: no mDNS daemon runs (avahi-daemon)\n");
    EXPECT_EQ(ending.status, 3);
    EXPECT_EQ(marks(run({"doctor", "--json"})).at("mDNS daemon"), "fail");
}

TEST_F(PanelctlDiscoveryTest, DoctorIsContentWithAPanelThatAnnouncesItself)
{
    startAnnouncedPanel();
    const Ending ending = run({"doctor", "--panel", "Room 204"});
    EXPECT_THAT(ending.output, HasSubstr("ok    mDNS daemon: avahi "));
    EXPECT_THAT(ending.output, HasSubstr("ok    panels: Room 204 (127.0.0.1)\n"));
    EXPECT_THAT(ending.output, HasSubstr("ok    panel's port 5505: 127.0.0.1 answers\n"));
    EXPECT_THAT(ending.output, EndsWith("8 checks: 7 ok, 1 warning, 0 failed\n"));
    EXPECT_EQ(ending.status, 0);
}

} // namespace companion::testing
