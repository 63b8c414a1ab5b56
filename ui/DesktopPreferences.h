#pragma once

#include <QDBusConnection>
#include <QObject>

namespace companion {

/// Allows motion as far as the desktop does: by the toolkit's style hint, which Plasma's setting reaches, and by the
/// settings portal, where GNOME and others tell of theirs. The portal is asked without waiting, and again when it
/// comes later; it is not started for this. Without it the hint alone decides.
class DesktopMotion : public QObject {
    Q_OBJECT

public:
    explicit DesktopMotion(QDBusConnection bus = QDBusConnection::sessionBus());

private:
    void ask();

    QDBusConnection m_bus;
};

} // namespace companion
