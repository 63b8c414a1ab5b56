#include "views/qt/MimePasteboard.h"

#include <algorithm>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QMimeData>
#include <QUrl>
#include <QVariantMap>

namespace companion {

namespace {

const QString png = QStringLiteral("image/png");
const QString pdf = QStringLiteral("application/pdf");
const QString urlList = QStringLiteral("text/uri-list");
const QString portalKey = QStringLiteral("application/vnd.portal.filetransfer");
constexpr int portalTimeout = 1000; // milliseconds

std::string bytes(const QByteArray& array)
{
    return array.toStdString();
}

} // namespace

std::vector<DragType> MimePasteboard::types() const
{
    std::vector<DragType> types;
    const auto addOnce = [&types](DragType type) {
        if (std::find(types.begin(), types.end(), type) == types.end())
            types.push_back(type);
    };
    for (const QString& format : m_mimeData.formats()) {
        if (format == png)
            addOnce(DragType::pngImage);
        else if (format == pdf)
            addOnce(DragType::pdf);
        else if (format == urlList || format == portalKey) {
            if (hasPortalKey() || namesReadableFile())
                addOnce(DragType::fileUrl);
            addOnce(DragType::url);
        }
    }
    return types;
}

std::optional<std::string> MimePasteboard::dataForType(DragType type) const
{
    switch (type) {
    case DragType::pngImage:
        return bytes(m_mimeData.data(png));
    case DragType::pdf:
        return bytes(m_mimeData.data(pdf));
    case DragType::url:
        return firstUrl();
    case DragType::fileUrl:
        return hasPortalKey() ? portalFileUrl() : firstUrl();
    }
    return std::nullopt;
}

std::optional<std::string> MimePasteboard::firstUrl() const
{
    const QList<QUrl> urls = m_mimeData.urls();
    if (urls.isEmpty())
        return hasPortalKey() ? portalFileUrl() : std::nullopt;
    return bytes(urls.first().toEncoded());
}

bool MimePasteboard::hasPortalKey() const
{
    return m_mimeData.hasFormat(portalKey);
}

/// Folders, devices, pipes and files that cannot be read are URLs and nothing more.
bool MimePasteboard::namesReadableFile() const
{
    const QList<QUrl> urls = m_mimeData.urls();
    if (urls.isEmpty() || !urls.first().isLocalFile())
        return false;
    const QFileInfo file(urls.first().toLocalFile());
    return file.isFile() && file.isReadable();
}

std::optional<std::string> MimePasteboard::portalFileUrl() const
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Documents"),
        QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), QStringLiteral("RetrieveFiles"));
    call << QString::fromUtf8(m_mimeData.data(portalKey)).remove(QChar::Null) << QVariantMap();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, portalTimeout);
    const QStringList paths = reply.arguments().value(0).toStringList();
    if (reply.type() != QDBusMessage::ReplyMessage || paths.isEmpty())
        return std::nullopt;
    return FileUrl::fromPath(paths.first().toStdString()).text();
}

} // namespace companion
