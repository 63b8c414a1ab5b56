#include "platform/avahi/AvahiServiceBrowser.h"

#include "tests/avahi/ServiceBrowsing.h"
#include "tests/avahi/ServicePublisher.h"

#include <atomic>
#include <gmock/gmock.h>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <unistd.h>

// One Avahi looks at another: the computer's daemon on the computer's bus, the panel's on a bus of its own, both on
// "lo".

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::UnorderedElementsAre;

namespace {

std::vector<std::string> numberedNames(const std::string& prefix, int count)
{
    std::vector<std::string> names;
    for (int i = 0; i < count; ++i)
        names.push_back(prefix + " " + std::to_string(i));
    return names;
}

/// Counts the connections to a bus's address and closes each at once.
class ClosedDoor {
public:
    explicit ClosedDoor(const std::string& busAddress)
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = busAddress.substr(std::string("unix:path=").size());
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        unlink(path.c_str());
        if (bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0
            || listen(m_socket, 8) != 0)
            throw std::runtime_error("cannot listen at " + path);
        m_thread = std::thread([this] { sendAway(); });
    }

    ~ClosedDoor()
    {
        shutdown(m_socket, SHUT_RDWR);
        m_thread.join();
        close(m_socket);
    }

    ClosedDoor(const ClosedDoor&) = delete;
    ClosedDoor& operator=(const ClosedDoor&) = delete;

    int knocks() const { return m_knocks; }

private:
    void sendAway()
    {
        for (int guest = 0; (guest = accept(m_socket, nullptr, nullptr)) >= 0; ++m_knocks)
            close(guest);
    }

    int m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::atomic<int> m_knocks = 0;
    std::thread m_thread;
};

} // namespace

class AvahiServiceBrowserTest : public ServiceBrowsing {
protected:
    void SetUp() override
    {
        ServiceBrowsing::SetUp();
        if (IsSkipped())
            return;
        panelBus.start();
        panelDaemon.start();
    }

    std::unique_ptr<Announcement> announce(const std::string& name, const std::string& host = "")
    {
        return std::make_unique<Announcement>(panelBus, name, "_airplay._tcp", host);
    }

    /// Everything announced so far has been told once a service announced now is found.
    void waitForNewestNews()
    {
        const auto marker = announce("marker");
        EXPECT_TRUE(waitFor("found marker"));
        EXPECT_TRUE(waitFor("resolved marker"));
    }

    std::vector<std::string> linesWithoutMarker() const
    {
        std::vector<std::string> lines = transcript.lines();
        std::erase_if(lines, [](const std::string& line) { return line.ends_with(" marker"); });
        return lines;
    }

    int linesThatBeginWith(const std::string& word) const
    {
        int count = 0;
        for (const std::string& line : transcript.lines())
            count += line.starts_with(word);
        return count;
    }

    PrivateBus panelBus;
    AvahiDaemon panelDaemon{panelBus, {.hostName = "panel"}};
    AvahiDaemon computerDaemon{*computerBus, {.hostName = "computer", .publishes = false}};
};

TEST_F(AvahiServiceBrowserTest, AnnouncedServiceIsFoundResolvedAndRemoved)
{
    computerDaemon.start();
    browse();
    auto panel = announce("Meridian 65|Room 204|0A00020F");
    EXPECT_TRUE(waitFor("resolved Meridian 65|Room 204|0A00020F"));
    ASSERT_EQ(list.services.size(), 1u);
    EXPECT_EQ(list.services[0]->type(), "_airplay._tcp");
    EXPECT_EQ(list.services[0]->domain(), "local.");

    panel.reset();
    EXPECT_TRUE(waitFor("removed Meridian 65|Room 204|0A00020F"));
    EXPECT_THAT(transcript.lines(),
        ElementsAre("found Meridian 65|Room 204|0A00020F", "resolved Meridian 65|Room 204|0A00020F",
            "removed Meridian 65|Room 204|0A00020F"));
    EXPECT_TRUE(list.services.empty());
    EXPECT_TRUE(logLines.lines().empty());
}

TEST_F(AvahiServiceBrowserTest, NamesOfAllKindsAndOf63BytesArriveUnchanged)
{
    const std::vector<std::string> names{
        "Tandem|Büro 3 – „Süd“ 会議室|0A00020F",
        R"(Tandem|"quoted" \ back\\slash.dots. and\032 blanks |0A000210)",
        "Halcyon-X||",
        "Meridian|" + std::string(45, 'x') + "|C0A80105",
    };
    ASSERT_EQ(names.back().size(), 63u);

    computerDaemon.start();
    browse();
    ServicePublisher publisher(panelBus);
    publisher.publish(names);
    for (const std::string& name : names)
        EXPECT_TRUE(waitFor("resolved " + name)) << name;
    EXPECT_EQ(list.services.size(), names.size());
}

TEST_F(AvahiServiceBrowserTest, DaemonMissingAtTheStartMayComeLater)
{
    browse();
    const auto panel = announce("late");
    EXPECT_TRUE(waitUntil([&] { return !logLines.lines().empty(); }));
    EXPECT_THAT(logLines.lines(), ElementsAre("log mDNS: the Avahi daemon is not running"));
    EXPECT_TRUE(transcript.lines().empty());

    computerDaemon.start();
    EXPECT_TRUE(waitFor("resolved late"));
    EXPECT_THAT(logLines.lines(),
        ElementsAre("log mDNS: the Avahi daemon is not running", "log mDNS: the Avahi daemon is running"));
}

TEST_F(AvahiServiceBrowserTest, BusMissingAtTheStartMayComeLater)
{
    computerBus->stop();
    browse();
    const auto panel = announce("late");
    run(2100ms); // past the first retry, which fails as well
    EXPECT_THAT(
        logLines.lines(), ElementsAre("log mDNS: there is no system bus to reach the Avahi daemon by"));

    computerBus->start();
    computerDaemon.start();
    EXPECT_TRUE(waitFor("resolved late"));
}

TEST_F(AvahiServiceBrowserTest, ABusThatStaysMissingIsTriedAfter2AndThenAfter4Seconds)
{
    computerBus->stop();
    const ClosedDoor door(computerBus->address());
    browse();
    run(1s);
    EXPECT_EQ(door.knocks(), 1);
    run(4s);
    EXPECT_EQ(door.knocks(), 2);
    run(2s);
    EXPECT_EQ(door.knocks(), 3);
}

TEST_F(AvahiServiceBrowserTest, ABusThatIsSilentAtTheStartHoldsNothingUpAndMayAnswerLater)
{
    computerDaemon.start();
    const auto panel = announce("late");
    computerBus->pause();
    browse();
    const auto silence = "log mDNS: the system bus, by which the Avahi daemon is reached, does not answer";
    EXPECT_TRUE(waitUntil([&] { return !logLines.lines().empty(); }, 4s));
    EXPECT_THAT(logLines.lines(), ElementsAre(silence));
    computerBus->resume();
    EXPECT_TRUE(waitFor("resolved late"));
    EXPECT_THAT(logLines.lines(), ElementsAre(silence, "log mDNS: the Avahi daemon is running"));
}

TEST_F(AvahiServiceBrowserTest, MayEndWhileTheBusIsSilent)
{
    computerBus->pause();
    browse();
    run(100ms);
    browser.reset();
    run(100ms);
    EXPECT_THAT(logLines.lines(), ElementsAre());
}

TEST_F(AvahiServiceBrowserTest, RestartOfTheDaemonReportsOnlyWhatChanged)
{
    computerDaemon.start();
    browse();
    const auto stays = announce("stays");
    auto goes = announce("goes");
    EXPECT_TRUE(waitFor("resolved stays"));
    EXPECT_TRUE(waitFor("resolved goes"));
    transcript.clear();

    computerDaemon.stop();
    goes.reset();
    const auto comes = announce("comes");
    run(200ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());
    computerDaemon.start();
    EXPECT_TRUE(waitFor("removed goes"));
    EXPECT_TRUE(waitFor("resolved comes"));
    waitForNewestNews();
    EXPECT_THAT(linesWithoutMarker(), UnorderedElementsAre("removed goes", "found comes", "resolved comes"));
}

TEST_F(AvahiServiceBrowserTest, CrashOfTheDaemonReportsNothingByItself)
{
    computerDaemon.start();
    browse();
    const auto stays = announce("stays");
    EXPECT_TRUE(waitFor("resolved stays"));
    computerDaemon.crash();
    EXPECT_TRUE(waitUntil([&] { return logLines.lines().size() == 1; }));
    computerDaemon.start();
    waitForNewestNews();
    EXPECT_THAT(linesWithoutMarker(), ElementsAre("found stays", "resolved stays"));
    EXPECT_THAT(logLines.lines(),
        ElementsAre("log mDNS: the Avahi daemon is not running", "log mDNS: the Avahi daemon is running"));
}

TEST_F(AvahiServiceBrowserTest, RestartOfTheBusReportsOnlyWhatChanged)
{
    computerDaemon.start();
    browse();
    const auto stays = announce("stays");
    EXPECT_TRUE(waitFor("resolved stays"));

    computerDaemon.stop();
    computerBus->stop();
    EXPECT_TRUE(waitUntil([&] {
        return !logLines.lines().empty()
            && logLines.lines().back().find("no system bus") != std::string::npos;
    }));
    computerBus->start();
    computerDaemon.start();
    waitForNewestNews();
    EXPECT_THAT(linesWithoutMarker(), ElementsAre("found stays", "resolved stays"));
}

TEST_F(AvahiServiceBrowserTest, ResolutionGoesOnAfterARestartOfTheDaemon)
{
    computerDaemon.start();
    browse();
    const auto panel = announce("patient", "late.local");
    EXPECT_TRUE(waitFor("found patient"));
    computerDaemon.stop();
    computerDaemon.start();
    const HostAnnouncement host(panelBus, "late.local", "127.0.0.9");
    EXPECT_TRUE(waitFor("resolved patient"));
    EXPECT_THAT(transcript.lines(), ElementsAre("found patient", "resolved patient"));
}

TEST_F(AvahiServiceBrowserTest, AddressThatComesAfterTheDaemonGaveUpIsStillAnAnswer)
{
    computerDaemon.start();
    browse();
    const auto panel = announce("slow", "late.local");
    EXPECT_TRUE(waitFor("found slow"));
    run(6s); // the daemon reports a failure after 5
    EXPECT_FALSE(hasHappened("resolved slow"));
    const HostAnnouncement host(panelBus, "late.local", "127.0.0.9");
    EXPECT_TRUE(waitFor("resolved slow"));
}

TEST_F(AvahiServiceBrowserTest, NothingIsReportedAfterTheTimeOut)
{
    list.resolveTimeout = 1s;
    computerDaemon.start();
    browse();
    const auto panel = announce("too slow", "late.local");
    EXPECT_TRUE(waitFor("found too slow"));
    run(1050ms);
    const HostAnnouncement host(panelBus, "late.local", "127.0.0.9");
    waitForNewestNews();
    EXPECT_THAT(linesWithoutMarker(), ElementsAre("found too slow"));
}

TEST_F(AvahiServiceBrowserTest, LiveServicesAreResolvedWithinASecondBehind750DeadOnes)
{
    ServicePublisher publisher(panelBus);
    publisher.publish(numberedNames("dead", 750), "nowhere.local");
    computerDaemon.start();
    browse();
    ASSERT_TRUE(waitUntil([&] { return list.services.size() == 750; }, 60s));

    const std::vector<std::string> live = numberedNames("live", 5);
    publisher.publish(live);
    ASSERT_TRUE(waitUntil([&] { return list.services.size() == 755; }));
    const auto found = SteadyClock::now();
    for (const std::string& name : live)
        EXPECT_TRUE(waitFor("resolved " + name));
    EXPECT_LT(SteadyClock::now() - found, 1s);
}

TEST_F(AvahiServiceBrowserTest, ServiceSeenOverIPv4AndIPv6IsReportedOnceAndRemovedWithTheLast)
{
    // Avahi speaks no IPv6 on "lo".
    ChildProcess network({"sh", "-ec",
        "ip link add en0 type veth peer name en1; ip link set en1 up; ip link set en0 addrgenmode none up;"
        "ip address add 192.168.78.20/24 dev en0; ip address add fe80::20/64 dev en0 nodad"});
    if (network.waitForExit() != 0)
        GTEST_SKIP() << "no network card: " << network.output();
    panelDaemon.stop();
    AvahiDaemon ipv4Only{panelBus, {.hostName = "panel4", .interface = "en0"}};
    PrivateBus secondBus;
    secondBus.start();
    AvahiDaemon ipv6Only{
        secondBus, {.hostName = "panel6", .interface = "en0", .useIpv4 = false, .useIpv6 = true}};
    AvahiDaemon bothProtocols{
        *computerBus, {.hostName = "computer", .interface = "en0", .useIpv6 = true, .publishes = false}};
    ipv4Only.start();
    ipv6Only.start();
    bothProtocols.start();
    browse();

    auto overIpv4 = announce("double");
    auto overIpv6 = std::make_unique<Announcement>(secondBus, "double");
    ChildProcess witness({"avahi-browse", "-p", "_airplay._tcp"}, computerBus->environment());
    ASSERT_TRUE(witness.waitForOutput("+;en0;IPv4;double"));
    ASSERT_TRUE(witness.waitForOutput("+;en0;IPv6;double"));
    EXPECT_TRUE(waitFor("resolved double"));

    overIpv4.reset();
    ASSERT_TRUE(witness.waitForOutput("-;en0;IPv4;double"));
    waitForNewestNews();
    EXPECT_THAT(linesWithoutMarker(), ElementsAre("found double", "resolved double"));

    overIpv6.reset();
    EXPECT_TRUE(waitFor("removed double"));
    EXPECT_THAT(linesWithoutMarker(), ElementsAre("found double", "resolved double", "removed double"));
}

TEST_F(AvahiServiceBrowserTest, AlertHoldsReportsBackAndTheyComeInOrder)
{
    computerDaemon.start();
    browse();
    ChildProcess witness({"avahi-browse", "-p", "_airplay._tcp"}, computerBus->environment());
    auto first = announce("first");
    for (int i = 0; i < 50 && queue.isIdle(); ++i)
        runBlocked(20ms);
    ASSERT_FALSE(queue.isIdle());
    first.reset();
    ASSERT_TRUE(witness.waitForOutput("-;lo;IPv4;first"));
    const auto second = announce("second");
    ASSERT_TRUE(witness.waitForOutput("+;lo;IPv4;second"));
    runBlocked(300ms);
    EXPECT_THAT(transcript.lines(), ElementsAre());

    queue.runPending();
    EXPECT_THAT(transcript.lines(), ElementsAre("found first", "removed first", "found second"));
    EXPECT_FALSE(list.moreComing);
    EXPECT_TRUE(waitFor("resolved second"));
}

TEST_F(AvahiServiceBrowserTest, ServiceThatIsHeldResolvesWithoutItsBrowser)
{
    computerDaemon.start();
    browse();
    const auto panel = announce("orphan", "late.local");
    EXPECT_TRUE(waitFor("found orphan"));
    browser.reset();
    const HostAnnouncement host(panelBus, "late.local", "127.0.0.9");
    EXPECT_TRUE(waitFor("resolved orphan"));
}

TEST_F(AvahiServiceBrowserTest, BrowserWithoutADelegateReportsNothing)
{
    computerDaemon.start();
    browse();
    browser->setDelegate(nullptr);
    const auto panel = announce("unheard");
    run(500ms);
    browser->setDelegate(&list);
    waitForNewestNews();
    EXPECT_THAT(transcript.lines(), Not(Contains("found unheard")));
}

TEST_F(AvahiServiceBrowserTest, ThousandServicesAreFoundAndResolved)
{
    ServicePublisher publisher(panelBus);
    publisher.publish(numberedNames("Meridian 65|Room", 1000));
    computerDaemon.start();
    browse();
    EXPECT_TRUE(waitUntil([&] { return transcript.lines().size() >= 2000; }, 100s));
    EXPECT_EQ(linesThatBeginWith("found "), 1000);
    EXPECT_EQ(transcript.lines().size(), 2000u);
}

TEST_F(AvahiServiceBrowserTest, ThousandServicesAreResolvedAlthoughTheDaemonStopsForSixSeconds)
{
    ServicePublisher publisher(panelBus);
    publisher.publish(numberedNames("Meridian 65|Room", 1000));
    computerDaemon.start();
    browse();
    ASSERT_TRUE(waitUntil([&] { return linesThatBeginWith("found ") > 0; }));
    computerDaemon.pause();
    run(6s);
    EXPECT_LT(linesThatBeginWith("resolved "), 1000);
    computerDaemon.resume();
    waitUntil([&] { return linesThatBeginWith("resolved ") >= 1000; }, 20s);
    EXPECT_EQ(linesThatBeginWith("resolved "), 1000);
}

} // namespace companion::testing
