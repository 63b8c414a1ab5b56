#include "platform/avahi/AvahiServiceBrowser.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/avahi/ServicePublisher.h"
#include "tests/support/AvahiDaemon.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/NetworkNamespace.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <map>
#include <QCoreApplication>
#include <QTimer>
#include <thread>

// How long a browser takes to find and resolve many services that another computer announces.
//
//   many_services_benchmark [SERVICES=1000] [ROUNDS=5] [IDLE_SECONDS=0]
//
// Two daemons hear each other on "lo": one announces, the other is browsed, as in life. Each round measures the browser
// and, in turns, `avahi-browse -rt` of the same services. After two idle minutes (130) the browsed daemon has forgotten
// the services' addresses and has to ask the network. Times in milliseconds from the start of browsing.

namespace companion {

namespace {

/// The daemon probes first, then announces its records several times.
constexpr std::chrono::seconds settlingTime(12);

using SteadyClock = std::chrono::steady_clock;

class QuietLog : public SystemLog {
public:
    void log(std::string_view) override { }
};

/// Resolves everything; quits the event loop with the last one.
class Stopwatch : public ServiceBrowserDelegate, public ServiceDelegate {
public:
    explicit Stopwatch(std::size_t expected)
        : m_expected(expected)
    {
    }

    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool) override
    {
        if (m_services.empty())
            m_firstFound = elapsed();
        m_services.push_back(service);
        m_lastFound = elapsed();
        service->setDelegate(this);
        service->resolveWithTimeout(std::chrono::seconds(20));
    }

    void netServiceBrowserDidRemoveService(std::shared_ptr<Service>, bool) override { }

    void netServiceDidResolveAddress(Service&) override
    {
        if (++m_resolved == 1)
            m_firstResolved = elapsed();
        m_lastResolved = elapsed();
        if (m_resolved == m_expected)
            QCoreApplication::quit();
    }

    void print(int round) const
    {
        const double processor = 1e3 * static_cast<double>(std::clock() - m_processorStart) / CLOCKS_PER_SEC;
        std::printf("%-2d first found %6.1f  last found %6.1f  first resolved %6.1f  all resolved %6.1f  "
                    "processor %6.1f  resolved %zu\n",
            round, m_firstFound, m_lastFound, m_firstResolved, m_lastResolved, processor, m_resolved);
    }

private:
    double elapsed() const
    {
        return std::chrono::duration<double, std::milli>(SteadyClock::now() - m_start).count();
    }

    std::size_t m_expected;
    SteadyClock::time_point m_start = SteadyClock::now();
    std::clock_t m_processorStart = std::clock();
    std::vector<std::shared_ptr<Service>> m_services;
    std::size_t m_resolved = 0;
    double m_firstFound = 0;
    double m_firstResolved = 0;
    double m_lastFound = 0;
    double m_lastResolved = 0;
};

void measureRound(int round, std::size_t services)
{
    QtMainQueue queue;
    QuietLog log;
    Stopwatch stopwatch(services);
    AvahiServiceBrowser browser(queue, log);
    browser.setDelegate(&stopwatch);
    browser.searchForServices("_airplay._tcp", "local.");
    QTimer timeout;
    QObject::connect(&timeout, &QTimer::timeout, qApp, &QCoreApplication::quit);
    timeout.start(std::chrono::seconds(30));
    QCoreApplication::exec();
    stopwatch.print(round);
}

void measureAvahiBrowse(int round, const std::map<std::string, std::string>& environment)
{
    const auto start = SteadyClock::now();
    testing::ChildProcess browse({"sh", "-c", "avahi-browse -rtp _airplay._tcp | grep -c '^='"}, environment);
    browse.waitForExit(std::chrono::seconds(60));
    const std::chrono::duration<double, std::milli> time = SteadyClock::now() - start;
    std::printf("%-2d avahi-browse -rt %6.1f  resolved %s", round, time.count(), browse.output().c_str());
}

void printLoad()
{
    std::string load;
    std::getline(std::ifstream("/proc/loadavg"), load);
    std::printf("   load %s\n", load.c_str());
    std::fflush(stdout);
}

std::vector<std::string> namesOfPanels(std::size_t count)
{
    std::vector<std::string> names;
    char address[9];
    for (std::size_t i = 0; i < count; ++i) {
        std::snprintf(address, sizeof address, "0A%06zX", i & 0xFFFFFF);
        names.push_back("Meridian 65|Room " + std::to_string(i) + "|" + address);
    }
    return names;
}

} // namespace

} // namespace companion

int main(int argc, char** argv)
{
    using namespace companion;
    using namespace companion::testing;
    const std::size_t services = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1000;
    const int rounds = argc > 2 ? std::atoi(argv[2]) : 5;
    const std::chrono::seconds idleTime(argc > 3 ? std::atoi(argv[3]) : 0);
    auto problem = enterNetworkNamespace();
    if (!problem)
        problem = AvahiDaemon::reasonNotToRun();
    if (problem) {
        std::fprintf(stderr, "cannot run here: %s\n", problem->c_str());
        return 1;
    }
    PrivateBus panelBus;
    PrivateBus computerBus;
    setenv("DBUS_SYSTEM_BUS_ADDRESS", computerBus.address().c_str(), 1);
    QCoreApplication application(argc, argv);
    panelBus.start();
    computerBus.start();
    AvahiDaemon panelDaemon(panelBus);
    AvahiDaemon computerDaemon(computerBus, {.hostName = "computer", .publishes = false});
    panelDaemon.start();
    computerDaemon.start();
    ServicePublisher publisher(panelBus);
    publisher.publish(namesOfPanels(services));
    std::this_thread::sleep_for(settlingTime);
    for (int round = 0; round < rounds; ++round) {
        std::this_thread::sleep_for(idleTime);
        measureRound(round, services);
        std::this_thread::sleep_for(idleTime);
        measureAvahiBrowse(round, computerBus.environment());
        printLoad();
    }
}
