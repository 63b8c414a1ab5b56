#pragma once

#include "platform/Alerts.h"
#include "platform/FileReader.h"
#include "platform/HttpSession.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

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

/// How an upload ended, as far as the user is told.
enum class UploadOutcome { uploaded, serverError, rejected, silent };

/// Silent if there is no response; otherwise the status alone decides.
UploadOutcome uploadOutcome(const HttpReply& reply);

/// Sends one file to the upload service on port 5505 of a panel, and shows how it went in an alert. Main thread only.
/// It may be destroyed while its requests are in flight.
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

    /// Starts a request of its own with every call, and returns at once; nothing is sent when the address makes no
    /// URL. Fatal when one of the four values is absent that the request needs. `progress` is called on the delivery
    /// thread, may give the upload up, and is destroyed once the upload is over, however it ended.
    void upload(HttpProgress progress = {});

private:
    HttpRequest request(Url url, const std::string& boundary) const;

    UploadHost m_host;
    std::optional<std::string> m_fileType;
    FileBytes m_data;
    std::optional<std::string> m_fileName;
    std::optional<std::string> m_selectedDeviceIP;
};

} // namespace companion
