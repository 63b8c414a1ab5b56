#include "ui/MimePasteboard.h"

#include <algorithm>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMimeData>
#include <QSysInfo>
#include <QUrl>
#include <QVariantMap>
#include <sys/stat.h>

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

/// Folders, devices and pipes are URLs and nothing more. The path is taken as bytes, since not every file name is text.
bool namesRegularFile(const std::string& url)
{
    const std::optional<FileUrl> file = FileUrl::fromText(url);
    struct stat status = {};
    return file && stat(file->path().c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

/// Programs may name this computer in the URL of a file.
std::optional<std::string> listedUrl(const QMimeData& mimeData)
{
    const QList<QUrl> urls = mimeData.urls();
    if (urls.isEmpty())
        return std::nullopt;
    QUrl url = urls.first();
    if (url.isLocalFile() && url.host().compare(QSysInfo::machineHostName(), Qt::CaseInsensitive) == 0)
        url.setHost(QString());
    return bytes(url.toEncoded());
}

std::optional<std::string> askPortal(const QMimeData& mimeData)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.portal.Documents"),
        QStringLiteral("/org/freedesktop/portal/documents"),
        QStringLiteral("org.freedesktop.portal.FileTransfer"), QStringLiteral("RetrieveFiles"));
    call << QString::fromUtf8(mimeData.data(portalKey)).remove(QChar::Null) << QVariantMap();
    const QDBusMessage reply = QDBusConnection::sessionBus().call(call, QDBus::Block, portalTimeout);
    const QStringList paths = reply.arguments().value(0).toStringList();
    if (reply.type() != QDBusMessage::ReplyMessage || paths.isEmpty())
        return std::nullopt;
    return FileUrl::fromPath(paths.first().toStdString()).text();
}

} // namespace

/// A path from the portal is valid here; the one in the list may be the sandbox's, and counts only without it.
MimePasteboard::MimePasteboard(const QMimeData& mimeData, Stage stage)
    : m_mimeData(mimeData)
    , m_url(listedUrl(mimeData))
{
    const bool hasPortalKey = mimeData.hasFormat(portalKey);
    if (hasPortalKey && stage == Stage::drag) {
        m_fileUrl = "";
        return;
    }
    const std::optional<std::string> portalUrl = hasPortalKey ? askPortal(mimeData) : std::nullopt;
    const std::optional<std::string>& file = portalUrl ? portalUrl : m_url;
    if (file && namesRegularFile(*file))
        m_fileUrl = file;
    if (!m_url)
        m_url = portalUrl;
}

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
            if (m_fileUrl)
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
        return m_url;
    case DragType::fileUrl:
        return m_fileUrl;
    }
    return std::nullopt;
}

} // namespace companion
