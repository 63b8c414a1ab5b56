#include "ui/DesktopMotion.h"

#include "ui/Fade.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QStyle>

namespace companion {

namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settings = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString gnome = QStringLiteral("org.gnome.desktop.interface");

using Groups = QMap<QString, QVariantMap>;

Groups groupsIn(const QDBusMessage& reply)
{
    const bool isAnswer = reply.type() == QDBusMessage::ReplyMessage && reply.signature() == "a{sa{sv}}";
    return isAnswer ? qdbus_cast<Groups>(reply.arguments().constFirst()) : Groups();
}

bool allows(const Groups& groups)
{
    const bool isReduced = groups[appearance].value(QStringLiteral("reduced-motion")).toUInt() == 1;
    return !isReduced && groups[gnome].value(QStringLiteral("enable-animations"), true).toBool();
}

bool isHinted()
{
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) > 0;
}

} // namespace

DesktopMotion::DesktopMotion(QDBusConnection bus)
    : m_bus(std::move(bus))
{
    auto* const portal =
        new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &DesktopMotion::ask);
    ask();
}

void DesktopMotion::ask()
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("ReadAll"));
    call << QStringList{appearance, gnome};
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher] {
        allowMotion(isHinted() && allows(groupsIn(watcher->reply())));
        watcher->deleteLater();
    });
}

} // namespace companion
