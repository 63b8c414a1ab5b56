#include "platform/qt/QtFileChooser.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QPointer>
#include <QStandardPaths>

namespace companion {

namespace {

QString pathOf(UserFolder folder)
{
    switch (folder) {
    case UserFolder::downloads:
        break;
    }
    const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
    return QDir(downloads).exists() ? downloads : QDir::homePath();
}

/// "*.png"
QStringList patternsFor(const std::vector<std::string>& fileTypes)
{
    QStringList patterns;
    for (const std::string& type : fileTypes)
        patterns += "*." + QString::fromStdString(type);
    return patterns;
}

/// "png, jpg"
std::string listed(const std::vector<std::string>& fileTypes)
{
    std::string text;
    for (const std::string& type : fileTypes)
        text += (text.empty() ? "" : ", ") + type;
    return text;
}

std::optional<QString> chosenFile(QFileDialog& dialog)
{
    const QList<QUrl> urls = dialog.selectedUrls();
    if (urls.size() != 1 || !urls.constFirst().isLocalFile())
        return std::nullopt;
    return urls.constFirst().toLocalFile();
}

} // namespace

QtFileChooser::QtFileChooser(WidgetMainQueue& mainQueue, Alerts& alerts, QWidget& mainWindow)
    : m_mainQueue(mainQueue)
    , m_alerts(alerts)
    , m_mainWindow(mainWindow)
{
}

std::optional<FileUrl> QtFileChooser::runOpenPanel(
    const std::vector<std::string>& allowedFileTypes, UserFolder startingFolder)
{
    const QtMainQueue::Blocker blocker(m_mainQueue);
    const QStringList patterns = patternsFor(allowedFileTypes);
    // The window that it belongs to may be destroyed, and the dialog with it, while it is open.
    const QPointer<QFileDialog> dialog = new QFileDialog(
        &m_mainWindow, QCoreApplication::translate("FileChooser", "Upload a file"), pathOf(startingFolder));
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setOption(QFileDialog::ReadOnly); // the toolkit's own dialog would delete and rename files
    dialog->setNameFilter(
        QCoreApplication::translate("FileChooser", "Files for the panel") + " (" + patterns.join(' ') + ")");
    const bool isConfirmed = dialog->exec() == QDialog::Accepted && dialog;
    const std::optional<QString> path = isConfirmed ? chosenFile(*dialog) : std::nullopt;
    delete dialog;

    if (!isConfirmed)
        return std::nullopt;
    if (!path || !QDir::match(patterns, QFileInfo(*path).fileName())) {
        m_alerts.runModal("Cannot upload",
            "Choose one file on this computer that is of one of these kinds: " + listed(allowedFileTypes)
                + ".");
        return std::nullopt;
    }
    return FileUrl::fromPath(QFile::encodeName(*path).toStdString());
}

} // namespace companion
