#include "cli/SystemProbes.h"

#include "platform/avahi/SystemBus.h"

#include <algorithm>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>

namespace companion::cli {

using namespace std::chrono_literals;

namespace {

const auto avahi = QStringLiteral("org.freedesktop.Avahi");

QDBusMessage busCall(
    const QDBusConnection& bus, const QString& method, const QVariantList& arguments, int time)
{
    const QString name = QStringLiteral("org.freedesktop.DBus");
    auto call = QDBusMessage::createMethodCall(name, QStringLiteral("/org/freedesktop/DBus"), name, method);
    call.setArguments(arguments);
    return bus.call(call, QDBus::Block, time);
}

bool isSilent(const QDBusMessage& reply)
{
    return reply.type() == QDBusMessage::ErrorMessage && QDBusError(reply).type() == QDBusError::NoReply;
}

/// The daemon's own words for itself, for example "avahi 0.8". The calls take no longer than `time` together.
MdnsDaemonFacts lookAtDaemon(const QDBusConnection& bus, int time)
{
    const QDBusMessage owner = busCall(bus, QStringLiteral("GetNameOwner"), {avahi}, time / 4);
    if (isSilent(owner))
        return {MdnsDaemonState::silentBus, ""};
    if (owner.type() != QDBusMessage::ReplyMessage) {
        const auto started =
            busCall(bus, QStringLiteral("StartServiceByName"), {avahi, QVariant::fromValue(0U)}, time / 2);
        if (isSilent(started))
            return {MdnsDaemonState::silentDaemon, ""};
        if (started.type() != QDBusMessage::ReplyMessage)
            return {MdnsDaemonState::noDaemon, started.errorMessage().toStdString()};
    }
    const auto question = QDBusMessage::createMethodCall(avahi, QStringLiteral("/"),
        QStringLiteral("org.freedesktop.Avahi.Server"), QStringLiteral("GetVersionString"));
    const QDBusMessage version = bus.call(question, QDBus::Block, time / 4);
    if (isSilent(version))
        return {MdnsDaemonState::silentDaemon, ""};
    const QString text = version.arguments().value(0).toString();
    return {MdnsDaemonState::running, text.isEmpty() ? "Avahi" : text.toStdString()};
}

} // namespace

MdnsDaemonFacts lookAtMdnsDaemon(std::chrono::milliseconds time)
{
    SystemBus bus;
    switch (bus.waitForConnection(time)) {
    case SystemBus::State::connected:
        return lookAtDaemon(bus.connection(), static_cast<int>(std::max(time, 4ms).count()));
    case SystemBus::State::missing:
        return {MdnsDaemonState::noBus, bus.error().toStdString()};
    default:
        return {MdnsDaemonState::silentBus, ""};
    }
}

} // namespace companion::cli
