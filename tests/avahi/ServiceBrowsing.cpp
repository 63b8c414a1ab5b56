#include "tests/avahi/ServiceBrowsing.h"

#include <algorithm>
#include <QCoreApplication>
#include <QTimer>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

void ServiceList::netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool more)
{
    moreComing = more;
    m_transcript.add("found " + service->name());
    services.push_back(service);
    service->setDelegate(this);
    service->resolveWithTimeout(resolveTimeout);
}

void ServiceList::netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool more)
{
    moreComing = more;
    m_transcript.add("removed " + service->name());
    std::erase_if(services, [&](const auto& held) { return isSameService(*held, *service); });
}

void ServiceList::netServiceDidResolveAddress(Service& service)
{
    m_transcript.add("resolved " + service.name());
}

void ServiceBrowsing::SetUp()
{
    if (reasonForNoNetwork)
        GTEST_SKIP() << *reasonForNoNetwork;
    static const auto reason = AvahiDaemon::reasonNotToRun();
    if (reason)
        GTEST_SKIP() << *reason;
    computerBus->start();
}

void ServiceBrowsing::TearDown()
{
    browser.reset();
    list.services.clear();
    computerBus->stop();
}

void ServiceBrowsing::browse()
{
    browser = std::make_unique<AvahiServiceBrowser>(queue, log);
    browser->setDelegate(&list);
    browser->searchForServices("_airplay._tcp", "local.");
}

bool ServiceBrowsing::waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout)
{
    QTimer wakeUp; // so that the loop does not sleep past the end
    wakeUp.start(10ms);
    const auto deadline = SteadyClock::now() + timeout;
    while (!condition()) {
        if (SteadyClock::now() >= deadline)
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        queue.runPending();
    }
    return true;
}

bool ServiceBrowsing::waitFor(const std::string& line, std::chrono::milliseconds timeout)
{
    return waitUntil([&] { return hasHappened(line); }, timeout);
}

bool ServiceBrowsing::hasHappened(const std::string& line) const
{
    return std::find(transcript.lines().begin(), transcript.lines().end(), line) != transcript.lines().end();
}

void ServiceBrowsing::run(std::chrono::milliseconds duration)
{
    waitUntil([] { return false; }, duration);
}

void ServiceBrowsing::runBlocked(std::chrono::milliseconds duration)
{
    QEventLoop loop;
    QTimer::singleShot(duration, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace companion::testing
