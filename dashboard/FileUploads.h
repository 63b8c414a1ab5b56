#pragma once

#include "dashboard/DashboardView.h"
#include "dashboard/PairedPanel.h"
#include "panel/FileTypes.h"
#include "panel/UploadDataToHost.h"
#include "platform/Application.h"
#include "platform/FileChooser.h"
#include "platform/FileReader.h"
#include "platform/MouseEventPoster.h"

#include <memory>

namespace companion {

/// What file uploads need of the desktop.
struct FileUploadDependencies {
    FileChooser& fileChooser;
    FileReader& fileReader;
    Application& application;
    MouseEventPoster& mouseEventPoster; ///< Holds no button while a file is read.
};

/// A file's way from the button or the drop area to the request. Main thread only.
///
/// A file that waits for its half second keeps this object alive. Everything it refers to outlives it.
class FileUploads : public std::enable_shared_from_this<FileUploads> {
public:
    FileUploads(const FileUploadDependencies& dependencies, const UploadHost& host, SystemLog& log,
        DashboardView& view, std::shared_ptr<const PairedPanel> panel);

    void setFileTypes(FileTypeLists fileTypes) { m_fileTypes = std::move(fileTypes); }
    const FileTypeLists& fileTypes() const { return m_fileTypes; }

    void uploadFileAction();
    void uploadFileURL(const FileUrl& url) { passesUploadGate() && uploadReadable(url); }

    /// `whenEnded` is a job of the main queue once the upload has ended in whatever way.
    void uploadFileWithURL(const FileUrl& url, MainQueue::Job whenEnded = {});

    /// Refuses with an alert unless the paired panel takes files.
    bool passesUploadGate();

    /// Refuses with an alert a file that cannot be read. Whether it will be uploaded.
    bool uploadReadable(const FileUrl& url, MainQueue::Job whenEnded = {});

    void draggingBegin();
    void draggingFinished();

private:
    bool canBeRead(const FileUrl& url);
    void classifyUploadFile(const FileUrl& url, MainQueue::Job whenEnded);

    const FileUploadDependencies m_dependencies;
    const UploadHost m_host;
    SystemLog& m_log;
    DashboardView& m_view;
    const std::shared_ptr<const PairedPanel> m_panel;
    FileTypeLists m_fileTypes;
};

} // namespace companion
