// The file upload of the dashboard's controller: from the button or a drop to the request.

#include "dashboard/DashboardViewController.h"
#include "panel/UploadDataToHost.h"

#include <chrono>
#include <utility>

namespace companion {

namespace {

/// Lets the open panel go, or the drag's end be seen, before the main thread is busy with the file.
constexpr std::chrono::milliseconds delayAfterUserAction{500};

UploadWatch watchBy(std::shared_ptr<UploadProgress::Report> report)
{
    return {
        .progress = [report](std::uint64_t sent, std::uint64_t total) { report->sent(sent, total); },
        .ended = [report] { report->end(); },
    };
}

} // namespace

bool DashboardViewController::passesUploadGate()
{
    const bool isEnabled = m_isFileUploadEnabled; // a panel may be paired while the alert is open
    if (!isEnabled)
        m_use.alerts.runModal("Cannot upload", "File upload feature is not available for your device.");
    return isEnabled;
}

void DashboardViewController::uploadFileAction()
{
    if (!passesUploadGate())
        return;
    const std::optional<FileUrl> url =
        m_use.upload.fileChooser.runOpenPanel(openPanelFileTypes(), UserFolder::downloads);
    if (!url)
        return;
    m_use.log.log(url->text());
    uploadFileWithURL(*url);
}

void DashboardViewController::uploadFileURL(const FileUrl& url)
{
    if (passesUploadGate())
        uploadFileWithURL(url);
}

void DashboardViewController::uploadFileWithURL(const FileUrl& url)
{
    m_use.mainQueue.after(
        delayAfterUserAction, [self = shared_from_this(), url] { self->classifyUploadFile(url); });
}

void DashboardViewController::classifyUploadFile(const FileUrl& url)
{
    const std::string fileName = url.lastPathComponent();
    m_use.log.log("File name " + fileName);
    const std::string extension = fileExtension(fileName);
    m_use.log.log("File extension " + extension);
    const std::string fileType = fileTypeText(fileCategory(extension, m_fileTypes), extension);
    m_use.log.log("File type " + fileType);

    const PanelRequestHost& host = m_use.panelRequestHost;
    UploadDataToHost upload({host.httpSession, host.console, m_use.mainQueue, m_use.alerts});
    upload.initWith(
        fileType, m_use.upload.fileReader.readFile(url.path()), fileName, m_selectedDeviceIPAddress);
    upload.setWatch([&] { return watchBy(m_uploadProgress.begin(fileName)); });
    upload.upload();
}

void DashboardViewController::draggingBegin()
{
    if (!m_isFileUploadEnabled)
        return;
    m_view.setFileUploadViewImage("fileUploadGridActive");
    m_view.setUploadArrowImage("uploadArrowActive");
}

void DashboardViewController::draggingInprogress() { }

void DashboardViewController::draggingFinished()
{
    if (!m_isFileUploadEnabled)
        return;
    m_view.setFileUploadViewImage("fileUploadGrid");
    m_view.setUploadArrowImage("uploadArrow");
    m_use.mainQueue.after(delayAfterUserAction,
        [&application = m_use.upload.application] { application.activateIgnoringOtherApps(); });
}

} // namespace companion
