#include "platform/avahi/AvahiService.h"

#include <algorithm>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr auto retryInterval = 1s;

constexpr AvahiObjectType resolverType{"ServiceResolverNew", "org.freedesktop.Avahi.ServiceResolver"};
constexpr uint withoutText = 4; // AVAHI_LOOKUP_NO_TXT: the text record is not used, so it is not waited for

} // namespace

AvahiService::AvahiService(MainQueue& queue, std::shared_ptr<AvahiClient> client, std::string name,
    std::string type, std::string domain)
    : m_queue(queue)
    , m_client(std::move(client))
    , m_name(std::move(name))
    , m_type(std::move(type))
    , m_domain(std::move(domain))
{
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_deadline, &QTimer::timeout, &m_deadline, [this] { m_resolver.reset(); });
    QObject::connect(m_client.get(), &AvahiClient::daemonCame, &m_deadline, [this] {
        m_resolver.reset();
        resolveFirstInstance();
    });
}

void AvahiService::resolveWithTimeout(std::chrono::milliseconds timeout)
{
    m_deadline.start(timeout);
    m_hasFailed = false;
    m_resolver.reset();
    resolveFirstInstance();
}

void AvahiService::addInstance(ServiceInstance instance)
{
    m_instances.insert(m_hasFailed ? m_instances.begin() : m_instances.end(), instance);
    if (m_hasFailed)
        m_resolver.reset();
    resolveFirstInstance();
}

void AvahiService::removeInstance(ServiceInstance instance)
{
    std::erase(m_instances, instance);
}

void AvahiService::resolveFirstInstance()
{
    if (m_resolver || !m_deadline.isActive() || !m_client->isDaemonRunning() || m_instances.empty())
        return;
    const auto [interface, protocol] = m_instances.front();
    m_resolver = m_client->makeObject(resolverType,
        {interface, protocol, QString::fromStdString(m_name), QString::fromStdString(m_type),
            avahiDomain(m_domain), avahiAny, withoutText},
        {.onSignal = [this](const QString& member, const QVariantList&) { receiveSignal(member); },
            .onRefused = [this](const QString&) { retryLater(); }});
}

void AvahiService::receiveSignal(const QString& member)
{
    if (member == u"Found")
        reportResolved();
    else
        retryLater(); // the daemon's own time-out, after five seconds
}

void AvahiService::reportResolved()
{
    m_deadline.stop();
    m_resolver.reset();
    m_queue.async([weak = weak_from_this()] {
        const auto service = weak.lock();
        if (service && service->m_delegate)
            service->m_delegate->netServiceDidResolveAddress(*service);
    });
}

void AvahiService::retryLater()
{
    m_hasFailed = true;
    m_resolver.reset();
    if (!m_instances.empty())
        std::rotate(m_instances.begin(), m_instances.begin() + 1, m_instances.end());
    QTimer::singleShot(retryInterval, &m_deadline, [this] { resolveFirstInstance(); });
}

QString avahiDomain(const std::string& domain)
{
    QString text = QString::fromStdString(domain);
    if (text.endsWith(u'.'))
        text.chop(1);
    return text;
}

} // namespace companion
