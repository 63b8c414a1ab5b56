#pragma once

#include "platform/testing/Transcript.h"
#include "tests/support/PrivateBus.h"

#include <QDBusConnection>
#include <QDBusVirtualObject>
#include <QString>
#include <QStringList>
#include <set>
#include <string>

namespace companion::testing {

/// A stand-in for the Avahi daemon, for what the real one cannot be made to do on demand: the order of signals and
/// replies, refusals and failures. The transcript says "browse TYPE DOMAIN", "resolve INTERFACE/PROTOCOL NAME", "free PATH".
class FakeAvahi : public QDBusVirtualObject {
public:
    FakeAvahi(const PrivateBus& bus, Transcript& transcript);
    ~FakeAvahi() override;

    /// A signal of the browser or of the resolver at `path`.
    void sendItemNew(int interface, int protocol, const QString& name);
    void sendItemRemove(int interface, int protocol, const QString& name);
    void sendAllForNow();
    void sendBrowserFailure();
    void sendFound(const QString& path);
    void sendFailure(const QString& path);

    /// Sends the replies that were held back, and all further ones at once.
    void sendHeldReplies();

    int refusalsToCome = 0;       ///< so many next objects are refused
    bool holdsReplies = false;    ///< receives calls but does not reply
    QStringList foundBeforeReply; ///< names that a browser reports before the reply with its path
    QStringList resolvers;        ///< the paths of the present ones, in their order

private:
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;
    QString introspect(const QString&) const override { return {}; }

    void makeBrowser(const QDBusMessage& message);
    void makeResolver(const QDBusMessage& message);
    void reply(const QDBusMessage& message, const QString& path);
    void send(
        const QString& path, const QString& interface, const QString& member, const QVariantList& arguments);
    QVariantList item(int interface, int protocol, const QString& name) const;

    Transcript& m_transcript;
    QDBusConnection m_bus;
    QString m_browser;
    QList<QDBusMessage> m_heldReplies;
    int m_serial = 0;
};

} // namespace companion::testing
