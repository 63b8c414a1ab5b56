#pragma once

#include "platform/portal/RemoteDesktopPortal.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>
#include <QVariantMap>

namespace companion {

/// The portal on the session bus, as in the XDG Desktop Portal documentation. Main thread only; needs an event loop.
class DBusRemoteDesktopPortal : public QObject, public RemoteDesktopPortal {
    Q_OBJECT

public:
    explicit DBusRemoteDesktopPortal(const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~DBusRemoteDesktopPortal() override;

    void readVersion(VersionRead read) override;
    void createSession(Answered answered) override;
    void selectPointer(PersistMode mode, const std::string& restoreToken, Answered answered) override;
    void selectMonitor(Answered answered) override;
    void start(Answered answered) override;
    void notifyMotion(std::uint32_t streamNode, Point at, Notified answered) override;
    void notifyLeftButton(bool isDown, Notified answered) override;
    void closeSession() override;
    void setWhenLost(std::function<void(Loss)> whenLost) override { m_whenLost = std::move(whenLost); }
    void setWhenLocked(std::function<void(bool isLocked)> whenLocked) override
    {
        m_whenLocked = std::move(whenLocked);
    }

private Q_SLOTS:
    void takeResponse(uint response, const QVariantMap& results, const QDBusMessage& message);
    void takeClosed(const QDBusMessage& message);
    void takeActiveChanged(bool isActive, const QDBusMessage& message);

private:
    using Replied = std::function<void(const QDBusMessage& reply)>;

    void findOwner();
    void call(const QDBusMessage& message, Replied replied);
    void request(QDBusMessage message, QVariantMap options, Answered answered);
    void notify(const QDBusMessage& message, Notified answered);
    void answer(const PortalAnswer& answer);
    void loseSession(Loss loss);
    QString handlePath(const QString& kind, const QString& token) const;

    QDBusConnection m_bus;
    QDBusServiceWatcher m_watcher;
    QString m_owner; ///< The portal's unique name; other programs may emit its signals as well.
    std::function<void(Loss)> m_whenLost;
    std::function<void(bool isLocked)> m_whenLocked;

    int m_sessionSerial = 0; ///< Answers of earlier sessions are dropped.
    int m_requestSerial = 0;
    QString m_session; ///< Empty without one.
    QString m_request; ///< Empty without one.
    Answered m_answered;
    QTimer m_responseTimeout;
};

} // namespace companion
