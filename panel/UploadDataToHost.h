#pragma once

#include "platform/Alerts.h"
#include "platform/FileReader.h"
#include "platform/HttpSession.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

#include <functional>
#include <optional>
#include <string>

namespace companion {

/// What uploads need of the computer. All of it outlives the HTTP session's completions.
struct UploadHost {
    HttpSession& httpSession;
    Console& console;
    MainQueue& mainQueue;
    Alerts& alerts;
};

/// What an uploaded file's sender may want to know on the way; each may be empty. Delivery thread.
struct UploadWatch {
    HttpProgress progress;

    /// Once for each request, before its outcome, if it has one, is on its way to the user. Not called when the
    /// request is dropped together with its session.
    std::function<void()> ended;
};

/// How an upload ended, as far as the user is told.
enum class UploadOutcome { uploaded, serverError, rejected, silent };

/// No word about what never was answered; otherwise the status decides alone.
UploadOutcome uploadOutcome(const HttpReply& reply);

/// Sends one file to the upload service on port 5505 of a panel, and shows how it went in an alert. Main thread only.
/// It may be destroyed while its requests are under way.
class UploadDataToHost {
public:
    explicit UploadDataToHost(const UploadHost& host);

    /// initWithFileType:data:fileName:selectedDeviceIP:
    /// `fileType` is category and extension, for example "image/png"; `data` is the whole file, null when absent;
    /// `fileName` has no directory; the address is dotted IPv4.
    void initWith(std::optional<std::string> fileType, FileBytes data, std::optional<std::string> fileName,
        std::optional<std::string> selectedDeviceIP);

    const std::optional<std::string>& fileType() const { return m_fileType; }
    void setFileType(std::optional<std::string> fileType) { m_fileType = std::move(fileType); }
    const FileBytes& data() const { return m_data; }
    void setData(FileBytes data) { m_data = std::move(data); }
    const std::optional<std::string>& fileName() const { return m_fileName; }
    void setFileName(std::optional<std::string> fileName) { m_fileName = std::move(fileName); }
    const std::optional<std::string>& selectedDeviceIP() const { return m_selectedDeviceIP; }
    void setSelectedDeviceIP(std::optional<std::string> address) { m_selectedDeviceIP = std::move(address); }

    /// Called by `upload` for each request that it is about to send.
    void setWatch(std::function<UploadWatch()> makeWatch) { m_makeWatch = std::move(makeWatch); }

    /// Starts a request of its own with every call, and returns at once; nothing is sent when the address makes no
    /// URL. A fatal error when one of the four values is absent that it comes to need.
    void upload();

private:
    HttpRequest request(Url url, const std::string& boundary) const;

    UploadHost m_host;
    std::optional<std::string> m_fileType;
    FileBytes m_data;
    std::optional<std::string> m_fileName;
    std::optional<std::string> m_selectedDeviceIP;
    std::function<UploadWatch()> m_makeWatch;
};

} // namespace companion
