#pragma once

#include <QDBusConnection>
#include <QObject>

namespace companion {

/// Follows what the desktop's user has set for all programs: allows motion, and makes texts larger.
///
/// Motion is decided by the toolkit's style hint, which Plasma's setting reaches, and by the settings portal, where GNOME
/// and others tell of theirs. The portal also says how large GNOME's texts are on Wayland. It is asked without waiting, and
/// again when it comes later or a setting changes; it is not started for this. Without it the hint alone decides.
class DesktopPreferences : public QObject {
    Q_OBJECT

public:
    explicit DesktopPreferences(QDBusConnection bus = QDBusConnection::sessionBus());

private Q_SLOTS:
    void ask();

private:
    QDBusConnection m_bus;
};

} // namespace companion
