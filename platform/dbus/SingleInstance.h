#pragma once

#include <functional>
#include <QDBusConnection>
#include <QDBusContext>
#include <QObject>
#include <QStringList>
#include <QVariantMap>
#include <string>
#include <vector>

namespace companion {

/// One running program for each desktop session: the one that has the program's name on the session bus. The desktop and
/// further starts ask it to come to the front and to take files (Desktop Entry Specification, "D-Bus Activation").
///
/// Without a session bus every start is a program of its own. Main thread only, after the QApplication; what is asked
/// arrives by its event loop. Nothing waits for the bus longer than a second, nor for the running program longer than ten.
class SingleInstance : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    /// `urls` are those of the files to take; the program is to come to the front in any case, which the desktop's token lets
    /// it do. It is empty where the desktop has none.
    using WhenAsked =
        std::function<void(const std::vector<std::string>& urls, const std::string& activationToken)>;

    enum class Claim {
        isTheOne,   ///< This program is asked from now on; without a bus nobody can ask.
        handedOver, ///< The running program does what this one was started for.
        unanswered, ///< A program has the name and does not answer.
    };

    explicit SingleInstance(WhenAsked whenAsked, const QDBusConnection& bus = QDBusConnection::sessionBus());
    ~SingleInstance() override;

    /// Becomes the one that is asked, or else asks the one that is there to do this one's work.
    Claim claimOrHandOver(const std::vector<std::string>& urls);

    /// Becomes the one that is asked once the program that has the name is gone.
    void claimAfterPredecessor();

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(const QVariantMap& platformData);
    Q_SCRIPTABLE void Open(const QStringList& urls, const QVariantMap& platformData);
    Q_SCRIPTABLE void ActivateAction(
        const QString& action, const QVariantList& parameters, const QVariantMap& platformData);

private:
    enum class NameReply : uint { none = 0, owner = 1, inQueue = 2, exists = 3, alreadyOwner = 4 };

    NameReply requestName(uint flags);
    bool ask(const std::vector<std::string>& urls);

    const WhenAsked m_whenAsked;
    QDBusConnection m_bus;
};

} // namespace companion
