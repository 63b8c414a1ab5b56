#include "tests/ui/DocumentsPortal.h"

#include <stdexcept>
#include <utility>

#include <QDBusError>

namespace companion::testing {

namespace {

const QString connectionName = QStringLiteral("portal");
const QString serviceName = QStringLiteral("org.freedesktop.portal.Documents");

} // namespace

QStringList FileTransfer::RetrieveFiles(const QString& key, const QVariantMap&)
{
    if (isSilent)
        setDelayedReply(true);
    else if (key != QStringLiteral("key of the drag") || std::exchange(m_hasHandedOver, true))
        sendErrorReply(QDBusError::AccessDenied, QStringLiteral("no such key"));
    return files;
}

DocumentsPortal::DocumentsPortal(const QStringList& files, bool isSilent)
    : m_connection(
        QDBusConnection::connectToBus(qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS"), connectionName))
{
    m_transfer.files = files;
    m_transfer.isSilent = isSilent;
    m_transfer.moveToThread(&m_thread);
    m_thread.start();
    if (!m_connection.registerObject(
            QStringLiteral("/org/freedesktop/portal/documents"), &m_transfer, QDBusConnection::ExportAllSlots)
        || !m_connection.registerService(serviceName))
        throw std::runtime_error("the portal is not on the bus");
}

DocumentsPortal::~DocumentsPortal()
{
    m_connection.unregisterService(serviceName);
    m_connection.unregisterObject(QStringLiteral("/org/freedesktop/portal/documents"));
    QDBusConnection::disconnectFromBus(connectionName);
    m_thread.quit();
    m_thread.wait();
}

} // namespace companion::testing
