#include "ui/DesktopPreferences.h"

#include "ui/Fade.h"
#include "ui/Theme.h"

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

/// On X11 the desktop enlarges whole windows, by the resolution of its fonts.
double textScale(const Groups& groups)
{
    const bool isInFonts = QGuiApplication::platformName() == QLatin1String("xcb");
    return isInFonts ? 1 : groups[gnome].value(QStringLiteral("text-scaling-factor"), 1.0).toDouble();
}

bool isHinted()
{
    return QApplication::style()->styleHint(QStyle::SH_Widget_Animation_Duration) > 0;
}

} // namespace

DesktopPreferences::DesktopPreferences(QDBusConnection bus)
    : m_bus(std::move(bus))
{
    auto* const portal =
        new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(portal, &QDBusServiceWatcher::serviceRegistered, this, &DesktopPreferences::ask);
    m_bus.connect(service, path, settings, QStringLiteral("SettingChanged"), this, SLOT(ask()));
    ask();
}

void DesktopPreferences::ask()
{
    QDBusMessage call = QDBusMessage::createMethodCall(service, path, settings, QStringLiteral("ReadAll"));
    call << QStringList{appearance, gnome};
    call.setAutoStartService(false);
    auto* const watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [watcher] {
        const Groups groups = groupsIn(watcher->reply());
        allowMotion(isHinted() && allows(groups));
        Theme::setTextScale(textScale(groups));
        watcher->deleteLater();
    });
}

} // namespace companion
