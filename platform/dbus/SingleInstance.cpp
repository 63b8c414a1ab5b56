#include "platform/dbus/SingleInstance.h"

#include <chrono>
#include <QDBusMessage>
#include <utility>

namespace companion {

namespace {

const QString name = QStringLiteral("arpa.home.PanelCompanion");
const QString path =
    QStringLiteral("/arpa/home/PanelCompanion"); // the name with slashes, as desktops expect it
const QString interface = QStringLiteral("org.freedesktop.Application");

const QString tokenKey = QStringLiteral("activation-token");

constexpr uint doNotQueue = 4; // D-Bus Specification, "org.freedesktop.DBus.RequestName"
constexpr uint stayInQueue = 0;

constexpr std::chrono::milliseconds busTimeout = std::chrono::seconds(1);
constexpr std::chrono::milliseconds programTimeout =
    std::chrono::seconds(10); // it may be reading a large file

QDBusMessage blockingCall(
    const QDBusConnection& bus, const QDBusMessage& call, std::chrono::milliseconds timeout)
{
    return bus.call(call, QDBus::Block, static_cast<int>(timeout.count()));
}

/// What the desktop gave this start to let a window come to the front.
QVariantMap platformData()
{
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? QVariantMap() : QVariantMap{{tokenKey, token}};
}

std::string activationToken(const QVariantMap& platformData)
{
    return platformData.value(tokenKey).toString().toStdString();
}

} // namespace

SingleInstance::SingleInstance(WhenAsked whenAsked, const QDBusConnection& bus)
    : m_whenAsked(std::move(whenAsked))
    , m_bus(bus)
{
}

SingleInstance::~SingleInstance()
{
    m_bus.unregisterObject(path);
}

SingleInstance::Claim SingleInstance::claimOrHandOver(const std::vector<std::string>& urls)
{
    for (int attempt = 0; attempt < 2; ++attempt) {
        if (requestName(doNotQueue) != NameReply::exists)
            return Claim::isTheOne;
        if (ask(urls))
            return Claim::handedOver;
        // It may just have ended.
    }
    return Claim::unanswered;
}

void SingleInstance::claimAfterPredecessor()
{
    requestName(stayInQueue);
}

/// The object is there before the name, which callers wait for.
SingleInstance::NameReply SingleInstance::requestName(uint flags)
{
    if (!m_bus.isConnected())
        return NameReply::none;
    m_bus.registerObject(path, this, QDBusConnection::ExportScriptableSlots);
    QDBusMessage request = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("RequestName"));
    request << name << flags;
    const QDBusMessage reply = blockingCall(m_bus, request, busTimeout);
    return reply.type() == QDBusMessage::ReplyMessage
        ? static_cast<NameReply>(reply.arguments().value(0).toUInt())
        : NameReply::none;
}

bool SingleInstance::ask(const std::vector<std::string>& urls)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        name, path, interface, urls.empty() ? QStringLiteral("Activate") : QStringLiteral("Open"));
    call.setAutoStartService(false);
    if (!urls.empty()) {
        QStringList list;
        for (const std::string& url : urls)
            list << QString::fromStdString(url);
        call << list;
    }
    call << platformData();
    return blockingCall(m_bus, call, programTimeout).type() == QDBusMessage::ReplyMessage;
}

void SingleInstance::Activate(const QVariantMap& platformData)
{
    m_whenAsked({}, activationToken(platformData));
}

void SingleInstance::Open(const QStringList& urls, const QVariantMap& platformData)
{
    std::vector<std::string> texts;
    for (const QString& url : urls)
        texts.push_back(url.toStdString());
    m_whenAsked(texts, activationToken(platformData));
}

/// The desktop entry has none.
void SingleInstance::ActivateAction(const QString& action, const QVariantList&, const QVariantMap&)
{
    sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("There is no action \"%1\"").arg(action));
}

} // namespace companion
