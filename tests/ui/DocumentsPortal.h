#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QStringList>
#include <QThread>
#include <QVariantMap>

namespace companion::testing {

/// Hands over `files` for the key "key of the drag", once, as a transfer that stops by itself does, and refuses every
/// other key; or never answers.
class FileTransfer : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.FileTransfer")

public:
    QStringList files;
    bool isSilent = false;

public Q_SLOTS:
    QStringList RetrieveFiles(const QString& key, const QVariantMap& options);

private:
    bool m_hasHandedOver = false;
};

/// org.freedesktop.portal.Documents on this process's session bus, as a sandboxed desktop has it. It answers on a
/// thread and a connection of its own, since whoever asks blocks.
class DocumentsPortal {
public:
    DocumentsPortal(const QStringList& files, bool isSilent);
    ~DocumentsPortal();
    DocumentsPortal(const DocumentsPortal&) = delete;
    DocumentsPortal& operator=(const DocumentsPortal&) = delete;

private:
    QThread m_thread;
    FileTransfer m_transfer;
    QDBusConnection m_connection;
};

} // namespace companion::testing
