#include "platform/avahi/AvahiService.h"

#include <algorithm>
#include <utility>

namespace companion {

AvahiService::AvahiService(MainQueue& queue, std::shared_ptr<AvahiSession> session, std::string name,
    std::string type, std::string domain)
    : m_queue(queue)
    , m_session(std::move(session))
    , m_name(std::move(name))
    , m_type(std::move(type))
    , m_domain(std::move(domain))
{
    m_deadline.setSingleShot(true);
    m_deadline.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_deadline, &QTimer::timeout, &m_deadline, [this] { m_attempts.clear(); });
    QObject::connect(
        &m_session->client, &AvahiClient::daemonWent, &m_deadline, [this] { m_attempts.clear(); });
    QObject::connect(
        &m_session->client, &AvahiClient::daemonCame, &m_deadline, [this] { tryNextInstance(); });
}

void AvahiService::resolveWithTimeout(std::chrono::milliseconds timeout)
{
    m_attempts.clear();
    m_deadline.start(timeout);
    tryNextInstance();
}

void AvahiService::addInstance(ServiceInstance instance)
{
    m_instances.push_back(instance);
    const bool othersMayStillAnswer = std::any_of(
        m_attempts.begin(), m_attempts.end(), [](const auto& attempt) { return !attempt.hasFailed(); });
    if (!othersMayStillAnswer)
        tryNextInstance();
}

void AvahiService::removeInstance(ServiceInstance instance)
{
    std::erase(m_instances, instance);
}

void AvahiService::attemptResolved()
{
    m_deadline.stop();
    m_attempts.clear();
    m_queue.async([weak = weak_from_this()] {
        const auto service = weak.lock();
        if (service && service->m_delegate)
            service->m_delegate->netServiceDidResolveAddress(*service);
    });
}

void AvahiService::tryNextInstance()
{
    if (!m_deadline.isActive() || !m_session->client.isDaemonRunning())
        return;
    const auto next = std::find_if(m_instances.begin(), m_instances.end(),
        [this](ServiceInstance instance) { return !isBeingTried(instance); });
    if (next != m_instances.end())
        m_attempts.emplace_back(*this, m_session->client, m_session->resolutions, identity(), *next);
}

bool AvahiService::isBeingTried(ServiceInstance instance) const
{
    return std::any_of(m_attempts.begin(), m_attempts.end(),
        [instance](const ResolutionAttempt& attempt) { return attempt.instance() == instance; });
}

ServiceIdentity AvahiService::identity() const
{
    return {QString::fromStdString(m_name), QString::fromStdString(m_type), avahiDomain(m_domain)};
}

QString avahiDomain(const std::string& domain)
{
    QString text = QString::fromStdString(domain);
    if (text.endsWith(u'.'))
        text.chop(1);
    return text;
}

} // namespace companion
