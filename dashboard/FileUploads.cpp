#include "dashboard/FileUploads.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace companion {

namespace {

/// Lets the open panel close, or the drag end, before the main thread is busy with the file.
constexpr std::chrono::milliseconds delayAfterUserAction{500};

int percentOf(std::uint64_t sent, std::uint64_t total)
{
    return total == 0 ? 0 : static_cast<int>(std::min(sent, total) * 100 / total);
}

} // namespace

FileUploads::FileUploads(const FileUploadDependencies& dependencies, const UploadHost& host, SystemLog& log,
    DashboardView& view, std::shared_ptr<const PairedPanel> panel)
    : m_dependencies(dependencies)
    , m_host(host)
    , m_log(log)
    , m_view(view)
    , m_panel(std::move(panel))
{
}

bool FileUploads::passesUploadGate()
{
    if (m_panel->isFileUploadEnabled)
        return true;
    m_host.alerts.runModal("Cannot upload", "File upload feature is not available for your device.");
    return false; // even if a panel was paired while the alert was open
}

void FileUploads::uploadFileAction()
{
    if (!passesUploadGate())
        return;
    const std::optional<FileUrl> url =
        m_dependencies.fileChooser.runOpenPanel(openPanelFileTypes(), UserFolder::downloads);
    if (!url)
        return;
    m_log.log(url->text());
    uploadFileWithURL(*url);
}

void FileUploads::uploadFileURL(const FileUrl& url)
{
    if (passesUploadGate())
        uploadFileWithURL(url);
}

void FileUploads::uploadFileWithURL(const FileUrl& url)
{
    m_host.mainQueue.after(
        delayAfterUserAction, [self = shared_from_this(), url] { self->classifyUploadFile(url); });
}

void FileUploads::classifyUploadFile(const FileUrl& url)
{
    const std::string fileName = url.lastPathComponent();
    m_log.log("File name " + fileName);
    const std::string extension = fileExtension(fileName);
    m_log.log("File extension " + extension);
    const std::string fileType = fileTypeText(fileCategory(extension, m_fileTypes), extension);
    m_log.log("File type " + fileType);

    m_dependencies.mouseEventPoster.touchesEnd(); // they wait while the main thread reads the file
    UploadDataToHost request(m_host);
    request.initWith(fileType, m_dependencies.fileReader.readFile(url.path()), fileName, m_panel->ipAddress);
    auto upload = std::make_shared<UploadUnderWay>();
    const std::weak_ptr<UploadUnderWay> whileUnderWay = upload;
    request.upload([upload = std::move(upload)](std::uint64_t sent, std::uint64_t total) {
        upload->percent = percentOf(sent, total);
        return !upload->isGivenUp;
    });
    if (!whileUnderWay.expired()) // a text that is no URL sends nothing
        m_view.showUpload(fileName, whileUnderWay);
}

void FileUploads::draggingBegin()
{
    if (!m_panel->isFileUploadEnabled)
        return;
    m_view.setFileUploadViewImage("fileUploadGridActive");
    m_view.setUploadArrowImage("uploadArrowActive");
}

void FileUploads::draggingFinished()
{
    if (!m_panel->isFileUploadEnabled)
        return;
    m_view.setFileUploadViewImage("fileUploadGrid");
    m_view.setUploadArrowImage("uploadArrow");
    m_host.mainQueue.after(delayAfterUserAction,
        [&application = m_dependencies.application] { application.activateIgnoringOtherApps(); });
}

} // namespace companion
