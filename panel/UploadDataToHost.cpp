#include "panel/UploadDataToHost.h"

#include "panel/MultipartBody.h"
#include "panel/Uuid.h"
#include "platform/FatalError.h"

#include <utility>

namespace companion {

namespace {

struct UploadAlert {
    const char* title;
    const char* message;
};

UploadAlert alertAbout(UploadOutcome outcome)
{
    if (outcome == UploadOutcome::uploaded)
        return {"Success", "File Uploaded successfully."};
    if (outcome == UploadOutcome::serverError)
        return {"Failure", "Server error while uploading. Please try again."};
    return {"Failure", "File Upload failed."};
}

void showUploadAlert(const UploadHost& host, const UploadAlert& alert)
{
    host.alerts.runModal(alert.title, alert.message);
}

bool hasAnswer(const HttpReply& reply)
{
    return reply.data && !reply.error;
}

void handleReply(const UploadHost& host, const HttpReply& reply)
{
    if (!hasAnswer(reply))
        return;
    host.console.print(reply.response ? reply.response->description() : "no response");
    const UploadOutcome outcome = uploadOutcome(reply);
    if (outcome == UploadOutcome::silent)
        return;
    if (outcome == UploadOutcome::uploaded)
        host.console.print("Successfully uploaded");
    host.mainQueue.async([host, outcome] { showUploadAlert(host, alertAbout(outcome)); });
}

/// One line, for diagnostics.
std::string description(const HttpRequest& request)
{
    std::string text = "{";
    const char* separator = " ";
    for (const HttpHeader& header : request.headers) {
        text += separator + header.name + " = \"" + header.value + "\"";
        separator = "; ";
    }
    std::size_t bytes = 0;
    for (const auto& piece : *request.body)
        bytes += piece->size();
    return text + " } " + std::to_string(bytes);
}

[[noreturn]] void failWithout(const char* what)
{
    fatalError(std::string("An upload has no ") + what + ".");
}

} // namespace

UploadOutcome uploadOutcome(const HttpReply& reply)
{
    if (!hasAnswer(reply) || !reply.response || !reply.response->statusCode)
        return UploadOutcome::silent;
    if (*reply.response->statusCode == 500)
        return UploadOutcome::serverError;
    return *reply.response->statusCode == 200 ? UploadOutcome::uploaded : UploadOutcome::rejected;
}

UploadDataToHost::UploadDataToHost(const UploadHost& host)
    : m_host(host)
{
}

void UploadDataToHost::initWith(std::optional<std::string> fileType, FileBytes data,
    std::optional<std::string> fileName, std::optional<std::string> selectedDeviceIP)
{
    setFileType(std::move(fileType));
    setData(std::move(data));
    setFileName(std::move(fileName));
    setSelectedDeviceIP(std::move(selectedDeviceIP));
}

void UploadDataToHost::upload(HttpProgress progress)
{
    m_host.console.print("Uploading...");
    const std::string boundary = "Boundary-" + makeUuid();
    if (!m_selectedDeviceIP)
        failWithout("panel address");
    std::optional<Url> url = urlFromText("http://" + *m_selectedDeviceIP + ":5505/uploadfile");
    if (!url)
        return;

    HttpRequest made = request(std::move(*url), boundary);
    m_host.console.print("request: " + description(made));
    made.progress = std::move(progress);
    // The completion outlives this object, so it holds by itself what it needs.
    m_host.httpSession.send(
        std::move(made), [host = m_host](const HttpReply& reply) { handleReply(host, reply); });
}

HttpRequest UploadDataToHost::request(Url url, const std::string& boundary) const
{
    if (!m_data)
        failWithout("data");
    if (!m_fileName)
        failWithout("file name");
    if (!m_fileType)
        failWithout("file type");

    HttpRequest made;
    made.url = std::move(url);
    made.method = HttpMethod::post;
    made.headers = {{"Content-Type", "multipart/form-data; boundary=" + boundary},
        // The file's length, which is not that of the body.
        {"Content-Length", std::to_string(m_data->size())}, {"srcfilename", *m_fileName},
        {"filetype", *m_fileType}}; // none changes the protocol's cache policy
    made.body = makeMultipartBody(/*textFields=*/{}, m_data, "my-file", *m_fileName, boundary, *m_fileType);
    return made;
}

} // namespace companion
