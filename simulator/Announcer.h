#pragma once

#include "platform/avahi/SystemBus.h"
#include "simulator/EventLog.h"
#include "simulator/InstanceName.h"
#include "simulator/PanelState.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QObject>
#include <QTimer>

#include <functional>
#include <memory>

namespace companion::simulator {

/// Announces the panel as "_airplay._tcp" through the Avahi daemon, over D-Bus, and again whenever the bus or the daemon
/// appears. Numbers a name that is taken. Main thread only; blocks only in its destructor, for half a second at most.
class Announcer : public QObject {
    Q_OBJECT

public:
    Announcer(PanelState& state, EventLog& log, InstanceName name);
    /// Withdraws the announcement.
    ~Announcer() override;

private slots:
    void serverStateChanged(int state, const QString& error);
    void groupStateChanged(int state, const QString& error, const QDBusMessage& signal);

private:
    using OnReply = std::function<void(const QDBusMessage&)>;

    void busChanged(SystemBus::State state);
    void subscribe();
    void daemonAppeared();
    void daemonVanished();
    void forgetGroup();
    void requestGroup();
    void addService();
    void commit();
    void groupState(int state, const QString& error);
    void nameTaken();
    void established();
    void withdraw();
    void retryLater(const std::string& reason);
    void logOnce(const std::string& problem);
    void callDaemon(const QString& path, const QString& interface, const QString& method,
        const QVariantList& arguments, OnReply then);
    void callGroup(const QString& method, const QVariantList& arguments, OnReply then);

    PanelState& m_state;
    EventLog& m_log;
    const InstanceName m_name;
    unsigned m_attempt = 1;
    unsigned m_generation = 0; ///< replies to calls of an earlier generation are dropped
    SystemBus m_bus;
    std::unique_ptr<QDBusServiceWatcher> m_daemonWatcher;
    QString m_group; ///< object path; "" if there is none
    std::string m_logged;
    QTimer m_retry;
};

} // namespace companion::simulator
