#include "tests/avahi/FakeAvahi.h"

#include <QDBusMessage>
#include <QDBusObjectPath>
#include <utility>

namespace companion::testing {

namespace {

const QString connectionName = QStringLiteral("fake-avahi");
const QString browserInterface = QStringLiteral("org.freedesktop.Avahi.ServiceBrowser");
const QString resolverInterface = QStringLiteral("org.freedesktop.Avahi.ServiceResolver");

} // namespace

FakeAvahi::FakeAvahi(const PrivateBus& bus, Transcript& transcript)
    : m_transcript(transcript)
    , m_bus(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), connectionName))
{
    m_bus.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
    m_bus.registerService(QStringLiteral("org.freedesktop.Avahi"));
}

FakeAvahi::~FakeAvahi()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

void FakeAvahi::sendItemNew(int interface, int protocol, const QString& name)
{
    send(m_browser, browserInterface, QStringLiteral("ItemNew"), item(interface, protocol, name));
}

void FakeAvahi::sendItemRemove(int interface, int protocol, const QString& name)
{
    send(m_browser, browserInterface, QStringLiteral("ItemRemove"), item(interface, protocol, name));
}

void FakeAvahi::sendAllForNow()
{
    send(m_browser, browserInterface, QStringLiteral("AllForNow"), {});
}

void FakeAvahi::sendBrowserFailure()
{
    send(m_browser, browserInterface, QStringLiteral("Failure"),
        {QStringLiteral("org.freedesktop.Avahi.NoNetworkError")});
}

void FakeAvahi::sendFound(const QString& path)
{
    send(path, resolverInterface, QStringLiteral("Found"), {});
}

void FakeAvahi::sendFailure(const QString& path)
{
    send(path, resolverInterface, QStringLiteral("Failure"),
        {QStringLiteral("org.freedesktop.Avahi.TimeoutError")});
}

bool FakeAvahi::handleMessage(const QDBusMessage& message, const QDBusConnection&)
{
    if (refusalsToCome > 0 && message.member().endsWith(u"New")) {
        --refusalsToCome;
        m_bus.send(message.createErrorReply(QStringLiteral("org.freedesktop.Avahi.Refused"), QString()));
    } else if (message.member() == u"ServiceBrowserNew") {
        makeBrowser(message);
    } else if (message.member() == u"ServiceResolverNew") {
        makeResolver(message);
    } else if (message.member() == u"Free") {
        m_transcript.add("free " + message.path().toStdString());
        resolvers.removeAll(message.path());
    }
    return true;
}

void FakeAvahi::makeBrowser(const QDBusMessage& message)
{
    m_browser = QStringLiteral("/Browser%1").arg(++m_serial);
    m_transcript.add("browse " + message.arguments()[2].toString().toStdString() + " "
        + message.arguments()[3].toString().toStdString());
    for (const QString& name : std::as_const(foundBeforeReply))
        sendItemNew(1, 0, name);
    reply(message, m_browser);
}

void FakeAvahi::makeResolver(const QDBusMessage& message)
{
    const QString path = QStringLiteral("/Resolver%1").arg(++m_serial);
    const QVariantList arguments = message.arguments();
    m_transcript.add("resolve " + std::to_string(arguments[0].toInt()) + "/"
        + std::to_string(arguments[1].toInt()) + " " + arguments[2].toString().toStdString());
    resolvers.append(path);
    reply(message, path);
}

void FakeAvahi::reply(const QDBusMessage& message, const QString& path)
{
    const QDBusMessage reply = message.createReply(QVariant::fromValue(QDBusObjectPath(path)));
    if (holdsReplies)
        m_heldReplies.append(reply);
    else
        m_bus.send(reply);
}

void FakeAvahi::sendHeldReplies()
{
    holdsReplies = false;
    for (const QDBusMessage& reply : std::exchange(m_heldReplies, {}))
        m_bus.send(reply);
}

void FakeAvahi::send(
    const QString& path, const QString& interface, const QString& member, const QVariantList& arguments)
{
    QDBusMessage signal = QDBusMessage::createSignal(path, interface, member);
    signal.setArguments(arguments);
    m_bus.send(signal);
}

QVariantList FakeAvahi::item(int interface, int protocol, const QString& name) const
{
    return {interface, protocol, name, QStringLiteral("_airplay._tcp"), QStringLiteral("local"), 0u};
}

} // namespace companion::testing
