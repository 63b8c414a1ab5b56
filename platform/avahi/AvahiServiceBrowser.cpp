#include "platform/avahi/AvahiServiceBrowser.h"

#include <algorithm>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr auto browseRetryInterval = 2s;

constexpr AvahiObjectType browserType{"ServiceBrowserNew", "org.freedesktop.Avahi.ServiceBrowser"};
constexpr uint noFlags = 0;

} // namespace

AvahiServiceBrowser::AvahiServiceBrowser(MainQueue& queue, SystemLog& log)
    : m_queue(queue)
    , m_log(log)
    , m_client(std::make_shared<AvahiClient>(log))
{
    m_retry.setSingleShot(true);
    m_retry.setInterval(browseRetryInterval);
    QObject::connect(&m_retry, &QTimer::timeout, &m_retry, [this] { browse(); });
    QObject::connect(m_client.get(), &AvahiClient::daemonCame, &m_retry, [this] {
        m_hasFailed = false;
        browse();
    });
}

AvahiServiceBrowser::~AvahiServiceBrowser() = default;

void AvahiServiceBrowser::setDelegate(ServiceBrowserDelegate* delegate)
{
    m_reports->delegate = delegate;
}

void AvahiServiceBrowser::searchForServices(const std::string& type, const std::string& domain)
{
    m_type = type;
    m_domain = domain;
    m_client->start();
}

void AvahiServiceBrowser::browse()
{
    m_retry.stop();
    for (auto& [name, known] : m_known)
        for (Sighting& sighting : known.sightings)
            sighting.isConfirmed = false;
    m_browser = m_client->makeObject(browserType,
        {avahiAny, avahiAny, QString::fromStdString(m_type), avahiDomain(m_domain), noFlags},
        {.onSignal = [this](const QString& member,
                         const QVariantList& arguments) { receiveSignal(member, arguments); },
            .onRefused = [this](const QString& error) { browseAgainLater(error); }});
}

void AvahiServiceBrowser::browseAgainLater(const QString& error)
{
    m_browser.reset();
    m_retry.start();
    if (!std::exchange(m_hasFailed, true))
        m_log.log("mDNS: browsing failed and will be tried again: " + error.toStdString());
}

void AvahiServiceBrowser::receiveSignal(const QString& member, const QVariantList& arguments)
{
    if (member == u"Failure")
        return browseAgainLater(arguments.value(0).toString());
    m_hasFailed = false;
    if (member == u"AllForNow")
        return removeUnconfirmed();

    const ServiceInstance instance{arguments.value(0).toInt(), arguments.value(1).toInt()};
    const std::string name = arguments.value(2).toString().toStdString();
    if (member == u"ItemNew")
        addSighting(name, instance);
    else if (member == u"ItemRemove")
        removeSighting(name, instance);
}

void AvahiServiceBrowser::addSighting(const std::string& name, ServiceInstance instance)
{
    Known& known = m_known[name];
    for (Sighting& sighting : known.sightings) {
        if (sighting.instance == instance) {
            sighting.isConfirmed = true;
            return;
        }
    }
    known.sightings.push_back({instance, true});
    if (known.sightings.size() == 1)
        reportFound(name, known);
    else if (const auto service = known.service.lock())
        service->addInstance(instance);
}

void AvahiServiceBrowser::removeSighting(const std::string& name, ServiceInstance instance)
{
    const auto known = m_known.find(name);
    if (known == m_known.end())
        return;
    if (const auto service = known->second.service.lock())
        service->removeInstance(instance);
    std::erase_if(known->second.sightings,
        [instance](const Sighting& sighting) { return sighting.instance == instance; });
    if (known->second.sightings.empty())
        reportRemoved(known);
}

void AvahiServiceBrowser::removeUnconfirmed()
{
    std::vector<std::pair<std::string, ServiceInstance>> gone;
    for (const auto& [name, known] : m_known)
        for (const Sighting& sighting : known.sightings)
            if (!sighting.isConfirmed)
                gone.emplace_back(name, sighting.instance);
    for (const auto& [name, instance] : gone)
        removeSighting(name, instance);
}

void AvahiServiceBrowser::reportFound(const std::string& name, Known& known)
{
    const auto service = makeService(name);
    service->addInstance(known.sightings.front().instance);
    known.service = service;
    deliver(&ServiceBrowserDelegate::netServiceBrowserDidFindService, service);
}

void AvahiServiceBrowser::reportRemoved(KnownServices::iterator known)
{
    auto service = known->second.service.lock();
    if (!service)
        service = makeService(known->first);
    m_known.erase(known);
    deliver(&ServiceBrowserDelegate::netServiceBrowserDidRemoveService, std::move(service));
}

void AvahiServiceBrowser::deliver(Report report, std::shared_ptr<Service> service)
{
    ++m_reports->pending;
    m_queue.async([weak = std::weak_ptr(m_reports), report, service = std::move(service)] {
        const auto reports = weak.lock();
        if (!reports)
            return;
        const bool moreComing = --reports->pending > 0;
        if (reports->delegate)
            (reports->delegate->*report)(service, moreComing);
    });
}

std::shared_ptr<AvahiService> AvahiServiceBrowser::makeService(const std::string& name)
{
    return std::make_shared<AvahiService>(m_queue, m_client, name, m_type, m_domain);
}

} // namespace companion
