#include "simulator/UploadExchange.h"

#include "simulator/BrowserSafety.h"
#include "simulator/EventLog.h"
#include "simulator/PanelState.h"
#include "simulator/UploadFile.h"

#include <QCryptographicHash>

#include <chrono>
#include <microhttpd.h>
#include <sys/socket.h>
#include <utility>

namespace companion::simulator {

namespace {

using namespace std::chrono_literals;
using Kind = UploadMode::Kind;

constexpr std::size_t parserMemory = 64 * 1024;
constexpr std::uint64_t cutPromise = 100;
constexpr auto modeCheckInterval = 50ms;

/// Shrinks the receive buffer to the minimum, so that a sender soon notices a slow reader.
void shrinkReceiveBuffer(const Request& request)
{
    const int size = 1;
    setsockopt(request.socket(), SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

std::string textOrEmpty(const char* text)
{
    return text ? text : "";
}

class UploadExchange : public Exchange {
public:
    UploadExchange(const Request& request, PanelState& state, EventLog& log, const std::string& folder);
    ~UploadExchange() override;

    std::optional<Outcome> headArrived() override;
    std::optional<Outcome> bodyArrived(std::string_view data) override;
    Outcome requestComplete() override;

private:
    void partArrived(const char* field, const char* fileName, const char* contentType, std::string_view data,
        std::uint64_t offset);
    bool isAnotherFile(const char* fileName) const;
    void beginFile(const char* fileName, const char* contentType);
    void process(std::string_view data);
    bool processSlowly(std::string_view data);
    void finishBody();
    void store();
    std::string offeredName() const;
    Outcome chosenOutcome() const;

    const Request& m_request;
    PanelState& m_state;
    EventLog& m_log;
    const std::string& m_folder;
    const UploadMode m_mode;
    MHD_PostProcessor* m_parser = nullptr;
    std::unique_ptr<UploadFile> m_file;
    QCryptographicHash m_hash{QCryptographicHash::Sha256};
    UploadRecord m_record;
    std::string m_firstBytes; ///< enough to recognise a picture
    std::string m_badRequest; ///< what is wrong with the body; "" if nothing is
    std::string m_storageProblem;
};

UploadExchange::UploadExchange(
    const Request& request, PanelState& state, EventLog& log, const std::string& folder)
    : m_request(request)
    , m_state(state)
    , m_log(log)
    , m_folder(folder)
    , m_mode(state.uploadReply())
{
    m_record.srcfilename = request.header("srcfilename").value_or("");
    m_record.filetype = request.header("filetype").value_or("");
    m_record.from = request.peer();
}

UploadExchange::~UploadExchange()
{
    if (m_parser)
        MHD_destroy_post_processor(m_parser);
    if (std::exchange(m_file, nullptr))
        m_log.write("upload of \"" + offeredName() + "\" broken off by " + m_record.from);
}

std::optional<Outcome> UploadExchange::headArrived()
{
    if (m_request.path() != "/uploadfile")
        return unknownPath(m_request);
    if (m_request.method() != "POST")
        return wrongMethod("POST");
    if (m_mode.kind == Kind::StatusEarly)
        return Answer{m_mode.status, ""};
    if (!m_request.header("Content-Type").value_or("").starts_with("multipart/form-data"))
        return lineAnswer(415, "an upload is multipart/form-data");
    const auto onPart = [](void* exchange, MHD_ValueKind, const char* field, const char* fileName,
                            const char* contentType, const char*, const char* data, std::uint64_t offset,
                            std::size_t size) {
        static_cast<UploadExchange*>(exchange)->partArrived(
            field, fileName, contentType, {data, size}, offset);
        return MHD_YES;
    };
    m_parser = MHD_create_post_processor(m_request.connection(), parserMemory, onPart, this);
    if (!m_parser)
        return lineAnswer(400, "the boundary is missing");
    if (m_mode.kind == Kind::Slow)
        shrinkReceiveBuffer(m_request);
    return std::nullopt;
}

std::optional<Outcome> UploadExchange::bodyArrived(std::string_view data)
{
    if (m_mode.kind == Kind::Reset)
        return ResetConnection();
    if (m_mode.kind == Kind::Slow)
        return processSlowly(data) ? std::nullopt : std::optional<Outcome>(HangUp());
    process(data);
    return std::nullopt;
}

Outcome UploadExchange::requestComplete()
{
    finishBody();
    if (!m_badRequest.empty())
        return lineAnswer(400, m_badRequest);
    if (!m_storageProblem.empty())
        return lineAnswer(500, "cannot store the file: " + m_storageProblem);
    return chosenOutcome();
}

void UploadExchange::partArrived(const char* field, const char* fileName, const char* contentType,
    std::string_view data, std::uint64_t offset)
{
    if (!m_badRequest.empty() || !fileName)
        return; // text fields beside the file are ignored
    if (textOrEmpty(field) != "my-file")
        m_badRequest = "the file part must be called \"my-file\"";
    else if (offset == 0 && isAnotherFile(fileName))
        m_badRequest = "more than one file";
    if (!m_badRequest.empty())
        return;
    if (!m_file)
        beginFile(fileName, contentType);
    m_record.size += data.size();
    m_firstBytes.append(data.substr(0, pictureTypeBytes - m_firstBytes.size()));
    m_hash.addData(QByteArrayView(data.data(), static_cast<qsizetype>(data.size())));
    m_file->write(data);
}

/// The parser may report the beginning of a part twice, first without data, so after an empty part the names decide.
bool UploadExchange::isAnotherFile(const char* fileName) const
{
    return m_file && (m_record.size > 0 || m_record.fileName != fileName);
}

void UploadExchange::beginFile(const char* fileName, const char* contentType)
{
    m_record.fileName = fileName;
    m_record.contentType = textOrEmpty(contentType);
    m_file = std::make_unique<UploadFile>(m_mode.kind == Kind::DiskFull ? "" : m_folder);
}

void UploadExchange::process(std::string_view data)
{
    // Errors are reported once the whole body has been read: a client that is still sending would miss the answer.
    if (m_badRequest.empty() && MHD_post_process(m_parser, data.data(), data.size()) == MHD_NO)
        m_badRequest = "the body is not multipart/form-data";
}

/// One byte a second; false if the client has disconnected.
bool UploadExchange::processSlowly(std::string_view data)
{
    for (; !data.empty(); data.remove_prefix(1)) {
        process(data.substr(0, 1));
        if (!m_request.wait(1s))
            return false;
    }
    return true;
}

void UploadExchange::finishBody()
{
    const bool isWhole = MHD_destroy_post_processor(std::exchange(m_parser, nullptr)) == MHD_YES;
    if (m_badRequest.empty() && !m_file)
        m_badRequest = "there is no file part";
    if (m_badRequest.empty() && !isWhole)
        m_badRequest = "the body ends before its last boundary";
    if (m_badRequest.empty() && m_mode.kind != Kind::DiskFull && m_mode.kind != Kind::Status)
        store();
    m_file.reset();
}

void UploadExchange::store()
{
    m_record.storedName = m_file->finish(safeFileName(offeredName()));
    m_storageProblem = m_file->problem();
    if (!m_storageProblem.empty()) {
        m_log.write("upload of \"" + offeredName() + "\" not stored: " + m_storageProblem);
        return;
    }
    m_record.sha256 = m_hash.result().toHex().toStdString();
    m_record.pictureType = pictureType(m_firstBytes);
    m_record.time = nowMs();
    const std::string size = ", " + std::to_string(m_record.size) + " bytes, from " + m_record.from;
    m_log.write(m_record.storedName.empty() ? "upload \"" + offeredName() + "\" counted" + size
                                            : "upload stored as \"" + m_record.storedName + "\"" + size);
    m_state.recordUpload(m_record);
}

/// The header field carries the name unchanged; in the part a quotation mark would end it.
std::string UploadExchange::offeredName() const
{
    return m_record.srcfilename.empty() ? m_record.fileName : m_record.srcfilename;
}

Outcome UploadExchange::chosenOutcome() const
{
    switch (m_mode.kind) {
    case Kind::Status:
        return Answer{m_mode.status, ""};
    case Kind::DiskFull:
        return lineAnswer(500, "cannot store the file: No space left on device");
    case Kind::Cut:
        return Answer{200, GeneratedBody{cutPromise, cutPromise / 2}};
    case Kind::Silence:
        while (m_state.uploadReply().kind == Kind::Silence)
            if (!m_request.wait(modeCheckInterval))
                return HangUp();
        break;
    default:
        break;
    }
    return Answer{200, "OK"};
}

} // namespace

std::unique_ptr<Exchange> openUpload(
    const Request& request, PanelState& state, EventLog& log, const std::string& folder)
{
    return std::make_unique<UploadExchange>(request, state, log, folder);
}

} // namespace companion::simulator
