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
    uploadReadable(*url);
}

bool FileUploads::uploadReadable(const FileUrl& url, MainQueue::Job whenEnded)
{
    if (!canBeRead(url))
        return false;
    uploadFileWithURL(url, std::move(whenEnded));
    return true;
}

/// Tells the user otherwise, who can do something about it now. A file that turns out to be unreadable half a second later
/// is a fatal error.
bool FileUploads::canBeRead(const FileUrl& url)
{
    const std::optional<FileProblem> problem = m_dependencies.fileReader.problemWith(url.path());
    if (!problem)
        return true;
    m_host.alerts.runModal("Cannot upload",
        "\"" + url.lastPathComponent()
            + (*problem == FileProblem::tooLarge ? "\" does not fit into the free memory of this computer."
                                                 : "\" cannot be read."));
    return false;
}

void FileUploads::uploadFileWithURL(const FileUrl& url, MainQueue::Job whenEnded)
{
    m_host.mainQueue.after(
        delayAfterUserAction, [self = shared_from_this(), url, whenEnded = std::move(whenEnded)] {
            self->classifyUploadFile(url, whenEnded);
        });
}

void FileUploads::classifyUploadFile(const FileUrl& url, MainQueue::Job whenEnded)
{
    const std::string fileName = url.lastPathComponent();
    m_log.log("File name " + fileName);
    const std::string extension = fileExtension(fileName);
    m_log.log("File extension " + extension);
    const std::string fileType = fileTypeText(fileCategory(extension, m_fileTypes), extension);
    m_log.log("File type " + fileType);

    m_dependencies.mouseEventPoster.touchesEnd(); // they wait while the main thread reads the file
    // The request lets go of it on the delivery thread when it ends.
    std::shared_ptr<UploadUnderWay> upload(
        new UploadUnderWay, [&mainQueue = m_host.mainQueue, whenEnded](const UploadUnderWay* ended) {
            delete ended;
            if (whenEnded)
                mainQueue.async(whenEnded);
        });
    m_view.showUpload(fileName, upload);
    UploadDataToHost request(m_host);
    request.initWith(fileType, m_dependencies.fileReader.readFile(url.path()), fileName, m_panel->ipAddress);
    upload->percent = 0;
    request.upload([upload = std::move(upload)](std::uint64_t sent, std::uint64_t total) {
        upload->percent = percentOf(sent, total);
        return !upload->isGivenUp;
    });
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
