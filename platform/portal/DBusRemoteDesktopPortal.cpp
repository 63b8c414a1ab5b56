#include "platform/portal/DBusRemoteDesktopPortal.h"

#include <chrono>
#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <utility>

namespace companion {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString desktopPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString remoteDesktop = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
const QString screenCast = QStringLiteral("org.freedesktop.portal.ScreenCast");
const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");
const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

constexpr uint pointerDevice = 2;
constexpr uint monitorSource = 1;
constexpr int leftButton = 0x110; // BTN_LEFT of linux/input-event-codes.h

// What nobody has to be asked for; the bus gives up on calls after the same time.
constexpr std::chrono::seconds responseTimeout{25};

QDBusMessage methodCall(const QString& interface, const QString& method)
{
    return QDBusMessage::createMethodCall(service, desktopPath, interface, method);
}

std::string errorOf(const QDBusMessage& reply)
{
    return reply.errorMessage().simplified().toStdString();
}

PortalAnswer failure(std::string error)
{
    return {.kind = PortalAnswer::Kind::failed, .error = std::move(error)};
}

std::optional<Size> sizeOf(const QVariant& value)
{
    if (!value.canConvert<QDBusArgument>())
        return std::nullopt;
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("(ii)"))
        return std::nullopt;
    int width = 0;
    int height = 0;
    argument.beginStructure();
    argument >> width >> height;
    argument.endStructure();
    if (width <= 0 || height <= 0)
        return std::nullopt;
    return Size{static_cast<double>(width), static_cast<double>(height)};
}

/// Of the first one: a person may pick one screen only.
std::optional<ScreenStream> streamOf(const QVariant& streams)
{
    if (!streams.canConvert<QDBusArgument>())
        return std::nullopt;
    const auto argument = streams.value<QDBusArgument>();
    if (argument.currentSignature() != QLatin1String("a(ua{sv})"))
        return std::nullopt;
    argument.beginArray();
    if (argument.atEnd())
        return std::nullopt;
    ScreenStream stream;
    QVariantMap properties;
    argument.beginStructure();
    argument >> stream.node >> properties;
    argument.endStructure();
    stream.size = sizeOf(properties.value(QStringLiteral("size")));
    return stream;
}

PortalAnswer answerOf(uint response, const QVariantMap& results)
{
    if (response == 1)
        return {.kind = PortalAnswer::Kind::cancelled};
    if (response != 0)
        return failure("it ended the request");
    return {.isPointerAllowed = (results.value(QStringLiteral("devices")).toUInt() & pointerDevice) != 0,
        .stream = streamOf(results.value(QStringLiteral("streams"))),
        .restoreToken = results.value(QStringLiteral("restore_token")).toString().toStdString()};
}

} // namespace

/// Signals are matched without a sender, since naming a service would make Qt wait for the name of its owner; who sent
/// one is compared with the owner of the portal's name.
DBusRemoteDesktopPortal::DBusRemoteDesktopPortal(const QDBusConnection& bus)
    : m_bus(bus)
    , m_watcher(service, m_bus, QDBusServiceWatcher::WatchForOwnerChange)
{
    m_bus.connect(QString(), QString(), requestInterface, QStringLiteral("Response"), this,
        SLOT(takeResponse(uint, QVariantMap, QDBusMessage)));
    m_bus.connect(QString(), QString(), sessionInterface, QStringLiteral("Closed"), this,
        SLOT(takeClosed(QDBusMessage)));
    m_bus.connect(QString(), QString(), QString(), QStringLiteral("ActiveChanged"), this,
        SLOT(takeActiveChanged(bool, QDBusMessage)));
    connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
        [this](const QString&, const QString&, const QString& owner) { m_owner = owner; });
    findOwner();
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this,
        [this] { loseSession(Loss::portalGone); });
    m_responseTimeout.setSingleShot(true);
    connect(&m_responseTimeout, &QTimer::timeout, this, [this] { answer(failure("it did not answer")); });
}

DBusRemoteDesktopPortal::~DBusRemoteDesktopPortal()
{
    closeSession();
}

void DBusRemoteDesktopPortal::call(const QDBusMessage& message, Replied replied)
{
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this,
        [this, serial = m_sessionSerial, replied = std::move(replied)](QDBusPendingCallWatcher* finished) {
            finished->deleteLater();
            if (serial != m_sessionSerial)
                return;
            replied(finished->reply());
        });
}

/// Of a portal that runs already.
void DBusRemoteDesktopPortal::findOwner()
{
    QDBusMessage message = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("/org/freedesktop/DBus"), QStringLiteral("org.freedesktop.DBus"),
        QStringLiteral("GetNameOwner"));
    message << service;
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        const QDBusPendingReply<QString> owner = *finished;
        if (owner.isValid())
            m_owner = owner.value();
    });
}

/// A call without a connection would never be answered.
void DBusRemoteDesktopPortal::readVersion(VersionRead read)
{
    if (!m_bus.isConnected()) {
        QMetaObject::invokeMethod(
            this, [read = std::move(read)] { read(0, "there is no session bus"); }, Qt::QueuedConnection);
        return;
    }
    QDBusMessage message =
        methodCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message << remoteDesktop << QStringLiteral("version");
    call(message, [read = std::move(read)](const QDBusMessage& reply) {
        const uint version = reply.arguments().value(0).value<QDBusVariant>().variant().toUInt();
        if (reply.type() == QDBusMessage::ReplyMessage)
            read(version, "version 0");
        else
            read(0, errorOf(reply));
    });
}

QString DBusRemoteDesktopPortal::handlePath(const QString& kind, const QString& token) const
{
    const QString sender = m_bus.baseService().mid(1).replace(QLatin1Char('.'), QLatin1Char('_'));
    return desktopPath + QLatin1Char('/') + kind + QLatin1Char('/') + sender + QLatin1Char('/') + token;
}

/// The path of a request is known before the call, so that an answer cannot come before someone listens; portals before
/// 0.9 choose their own and say it in the reply.
void DBusRemoteDesktopPortal::request(QDBusMessage message, QVariantMap options, Answered answered)
{
    const QString token = QStringLiteral("panel_companion_%1").arg(++m_requestSerial);
    options.insert(QStringLiteral("handle_token"), token);
    message << options;
    m_request = handlePath(QStringLiteral("request"), token);
    m_answered = std::move(answered);
    call(message, [this, path = m_request](const QDBusMessage& reply) {
        if (m_request != path)
            return; // answered already
        if (reply.type() == QDBusMessage::ReplyMessage)
            m_request = reply.arguments().value(0).value<QDBusObjectPath>().path();
        else
            answer(failure(errorOf(reply)));
    });
    m_responseTimeout.start(responseTimeout);
}

void DBusRemoteDesktopPortal::answer(const PortalAnswer& answer)
{
    m_responseTimeout.stop();
    m_request.clear();
    if (m_answered)
        std::exchange(m_answered, nullptr)(answer);
}

void DBusRemoteDesktopPortal::takeResponse(
    uint response, const QVariantMap& results, const QDBusMessage& message)
{
    if (!m_request.isEmpty() && message.path() == m_request && message.service() == m_owner)
        answer(answerOf(response, results));
}

void DBusRemoteDesktopPortal::createSession(Answered answered)
{
    const QString token = QStringLiteral("panel_companion_%1").arg(++m_requestSerial);
    m_session = handlePath(QStringLiteral("session"), token);
    request(methodCall(remoteDesktop, QStringLiteral("CreateSession")),
        {{QStringLiteral("session_handle_token"), token}}, std::move(answered));
}

void DBusRemoteDesktopPortal::selectPointer(
    PersistMode mode, const std::string& restoreToken, Answered answered)
{
    QVariantMap options{{QStringLiteral("types"), pointerDevice}};
    if (mode != PersistMode::none)
        options.insert(QStringLiteral("persist_mode"), static_cast<uint>(mode));
    if (!restoreToken.empty())
        options.insert(QStringLiteral("restore_token"), QString::fromStdString(restoreToken));
    QDBusMessage message = methodCall(remoteDesktop, QStringLiteral("SelectDevices"));
    message << QDBusObjectPath(m_session);
    request(message, options, std::move(answered));
}

void DBusRemoteDesktopPortal::selectMonitor(Answered answered)
{
    QDBusMessage message = methodCall(screenCast, QStringLiteral("SelectSources"));
    message << QDBusObjectPath(m_session);
    request(message, {{QStringLiteral("types"), monitorSource}}, std::move(answered));
}

void DBusRemoteDesktopPortal::start(Answered answered)
{
    QDBusMessage message = methodCall(remoteDesktop, QStringLiteral("Start"));
    message << QDBusObjectPath(m_session) << QString(); // no parent window
    request(message, {}, std::move(answered));
    m_responseTimeout.stop(); // a person takes the time that they need
}

void DBusRemoteDesktopPortal::notify(const QDBusMessage& message, Notified answered)
{
    call(message, [answered = std::move(answered)](const QDBusMessage& reply) {
        answered(reply.type() == QDBusMessage::ReplyMessage ? "" : errorOf(reply));
    });
}

void DBusRemoteDesktopPortal::notifyMotion(std::uint32_t streamNode, Point at, Notified answered)
{
    QDBusMessage message = methodCall(remoteDesktop, QStringLiteral("NotifyPointerMotionAbsolute"));
    message << QDBusObjectPath(m_session) << QVariantMap() << streamNode << at.x << at.y;
    notify(message, std::move(answered));
}

void DBusRemoteDesktopPortal::notifyLeftButton(bool isDown, Notified answered)
{
    QDBusMessage message = methodCall(remoteDesktop, QStringLiteral("NotifyPointerButton"));
    message << QDBusObjectPath(m_session) << QVariantMap() << leftButton << static_cast<uint>(isDown);
    notify(message, std::move(answered));
}

void DBusRemoteDesktopPortal::closeSession()
{
    ++m_sessionSerial;
    m_responseTimeout.stop();
    m_answered = nullptr;
    const auto close = [this](const QString& path, const QString& interface) {
        if (path.isEmpty())
            return;
        QDBusMessage message =
            QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Close"));
        message.setAutoStartService(false); // a portal that has gone has closed everything
        m_bus.send(message);
    };
    close(std::exchange(m_request, {}), requestInterface);
    close(std::exchange(m_session, {}), sessionInterface);
}

void DBusRemoteDesktopPortal::takeClosed(const QDBusMessage& message)
{
    if (!m_session.isEmpty() && message.path() == m_session && message.service() == m_owner)
        loseSession(Loss::closed);
}

/// Of org.freedesktop.ScreenSaver or a desktop's own, such as org.gnome.ScreenSaver.
void DBusRemoteDesktopPortal::takeActiveChanged(bool isActive, const QDBusMessage& message)
{
    if (m_whenLocked && message.interface().endsWith(QLatin1String(".ScreenSaver")))
        m_whenLocked(isActive);
}

void DBusRemoteDesktopPortal::loseSession(Loss loss)
{
    if (m_session.isEmpty())
        return;
    ++m_sessionSerial;
    m_responseTimeout.stop();
    m_answered = nullptr;
    m_request.clear();
    m_session.clear();
    if (m_whenLost)
        m_whenLost(loss);
}

} // namespace companion
