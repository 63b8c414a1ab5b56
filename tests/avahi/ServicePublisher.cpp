#include "tests/avahi/ServicePublisher.h"

#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QVariant>
#include <stdexcept>

namespace companion::testing {

namespace {

const QString serverInterface = QStringLiteral("org.freedesktop.Avahi.Server");
const QString groupInterface = QStringLiteral("org.freedesktop.Avahi.EntryGroup");

constexpr std::size_t servicesPerGroup = 30; // the daemon allows 32

QString uniqueName()
{
    static int serial = 0;
    return QStringLiteral("publisher-%1").arg(++serial);
}

} // namespace

ServicePublisher::ServicePublisher(const PrivateBus& bus)
    : m_connectionName(uniqueName())
    , m_bus(QDBusConnection::connectToBus(QString::fromStdString(bus.address()), m_connectionName))
{
    qDBusRegisterMetaType<QList<QByteArray>>();
}

ServicePublisher::~ServicePublisher()
{
    QDBusConnection::disconnectFromBus(m_connectionName);
}

void ServicePublisher::publish(const std::vector<std::string>& names, const std::string& host)
{
    for (std::size_t begin = 0; begin < names.size(); begin += servicesPerGroup) {
        const QString group = call(QStringLiteral("/"), serverInterface, QStringLiteral("EntryGroupNew"), {});
        const std::size_t end = std::min(names.size(), begin + servicesPerGroup);
        for (std::size_t i = begin; i < end; ++i)
            call(group, groupInterface, QStringLiteral("AddService"),
                {-1, -1, 0u, QString::fromStdString(names[i]), QStringLiteral("_airplay._tcp"),
                    QStringLiteral("local"), QString::fromStdString(host),
                    QVariant::fromValue(static_cast<ushort>(7000)),
                    QVariant::fromValue(QList<QByteArray>())});
        call(group, groupInterface, QStringLiteral("Commit"), {});
    }
}

QString ServicePublisher::call(
    const QString& path, const QString& interface, const QString& method, const QVariantList& arguments)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.Avahi"), path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = m_bus.call(message);
    if (reply.type() == QDBusMessage::ErrorMessage)
        throw std::runtime_error(reply.errorMessage().toStdString());
    return reply.arguments().value(0).value<QDBusObjectPath>().path();
}

} // namespace companion::testing
