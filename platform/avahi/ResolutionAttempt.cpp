#include "platform/avahi/ResolutionAttempt.h"

namespace companion {

using namespace std::chrono_literals;

namespace {

// A panel that is there answers in a few milliseconds; the announcement of one that is gone must not hold the
// others up.
constexpr auto patience = 500ms;

constexpr uint withoutText = 4; // AVAHI_LOOKUP_NO_TXT: the text record is not used, so it is not waited for

} // namespace

ResolutionAttempt::ResolutionAttempt(Owner& owner, AvahiClient& client, TurnQueue& turns,
    const ServiceIdentity& service, ServiceInstance instance)
    : m_owner(owner)
    , m_client(client)
    , m_service(service)
    , m_instance(instance)
    , m_turn(
          turns, [this] { begin(); }, [this] { suspend(); })
{
    m_silence.setSingleShot(true);
    m_silence.setInterval(patience);
    QObject::connect(&m_silence, &QTimer::timeout, &m_silence, [this] { m_turn.stepAside(); });
    m_turn.enter();
}

void ResolutionAttempt::begin()
{
    m_silence.start();
    m_resolver = m_client.makeObject(QStringLiteral("ServiceResolverNew"),
        {m_instance.interface, m_instance.protocol, m_service.name, m_service.type, m_service.domain,
            avahiAny, withoutText},
        {.onSignal = [this](const QString& member, const QVariantList&) { receiveSignal(member); },
            .onRefused =
                [this](const QString&) {
                    m_resolver.reset();
                    fail();
                }});
}

void ResolutionAttempt::suspend()
{
    m_silence.stop();
    m_resolver.reset();
}

void ResolutionAttempt::receiveSignal(const QString& member)
{
    if (member == u"Failure")
        return fail();
    m_turn.leave();
    m_owner.attemptResolved();
}

void ResolutionAttempt::fail()
{
    m_hasFailed = true;
    m_silence.stop();
    m_turn.stepAside();
    m_owner.attemptFailed();
}

} // namespace companion
