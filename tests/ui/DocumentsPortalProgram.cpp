#include <utility>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusError>
#include <QStringList>
#include <QTextStream>
#include <QVariantMap>

class FileTransfer : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileTransfer")

public:
    FileTransfer(QStringList files, bool isSilent)
        : m_files(std::move(files))
        , m_isSilent(isSilent)
    {
    }

public Q_SLOTS:
    QStringList RetrieveFiles(const QString& key, const QVariantMap&)
    {
        if (m_isSilent)
            setDelayedReply(true);
        else if (key != QStringLiteral("key of the drag") || std::exchange(m_hasHandedOver, true))
            sendErrorReply(QDBusError::AccessDenied, QStringLiteral("no such key"));
        return m_files;
    }

private:
    QStringList m_files;
    bool m_isSilent;
    bool m_hasHandedOver = false;
};

// Arguments: "answering" or "silent", then the files. Prints "ready" once it is on the session bus.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    FileTransfer transfer(arguments.mid(2), arguments.value(1) == QStringLiteral("silent"));
    auto bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(
            QStringLiteral("/org/freedesktop/portal/documents"), &transfer, QDBusConnection::ExportAllSlots)
        || !bus.registerService(QStringLiteral("org.freedesktop.portal.Documents"))) {
        QTextStream(stderr) << bus.lastError().message() << Qt::endl;
        return 1;
    }
    QTextStream(stdout) << "ready" << Qt::endl;
    return QCoreApplication::exec();
}

#include "DocumentsPortalProgram.moc"
