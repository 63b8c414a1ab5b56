#include "simulator/UploadExchange.h"

#include "simulator/EventLog.h"
#include "simulator/PictureType.h"
#include "simulator/UploadName.h"

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

MHD_Result partCallback(void* exchange, MHD_ValueKind, const char* field, const char* fileName,
    const char* contentType, const char*, const char* data, std::uint64_t offset, std::size_t size)
{
    static_cast<UploadExchange*>(exchange)->partArrived(field, fileName, contentType, {data, size}, offset);
    return MHD_YES;
}

/// The smallest receive buffer, so that the sender feels that nobody reads.
void narrow(MHD_Connection* connection)
{
    const int fd = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    const int size = 1;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

std::string textOrEmpty(const char* text)
{
    return text ? text : "";
}

} // namespace

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
    if (std::exchange(m_file, nullptr) && !m_isBodyFinished)
        m_log.write("upload of \"" + offeredName() + "\" broken off by " + m_record.from);
}

Outcome UploadExchange::headArrived()
{
    if (m_mode.kind == Kind::StatusEarly)
        return Answer{m_mode.status, ""};
    if (!m_request.header("Content-Type").value_or("").starts_with("multipart/form-data"))
        return lineAnswer(415, "an upload is multipart/form-data");
    m_parser = MHD_create_post_processor(m_request.connection(), parserMemory, &partCallback, this);
    if (!m_parser)
        return lineAnswer(400, "the boundary is missing");
    if (m_mode.kind == Kind::Slow)
        narrow(m_request.connection());
    return ReadOn();
}

Outcome UploadExchange::bodyArrived(std::string_view data, std::size_t& used)
{
    if (m_mode.kind == Kind::Reset)
        return ResetConnection();
    if (m_mode.kind == Kind::Slow)
        used = 1;
    process(data.substr(0, used));
    return m_mode.kind == Kind::Slow ? Outcome(Wait{1s}) : Outcome(ReadOn());
}

Outcome UploadExchange::requestComplete()
{
    if (!m_isBodyFinished)
        finishBody();
    if (auto answer = refusal())
        return *answer;
    return chosenAnswer();
}

void UploadExchange::partArrived(const char* field, const char* fileName, const char* contentType,
    std::string_view data, std::uint64_t offset)
{
    if (!m_badRequest.empty() || !fileName)
        return; // a text field beside the file is nobody's business
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

/// The parser may begin one part twice, the first time with nothing, so an empty file is told from the next by name.
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
    // What is wrong is told after the whole body has been read: a client that still sends would not hear it.
    if (m_badRequest.empty() && MHD_post_process(m_parser, data.data(), data.size()) == MHD_NO)
        m_badRequest = "the body is not multipart/form-data";
}

void UploadExchange::finishBody()
{
    m_isBodyFinished = true;
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
    m_record.isPicture = !pictureType(m_firstBytes).empty();
    m_record.time = nowMs();
    const std::string size = ", " + std::to_string(m_record.size) + " bytes, from " + m_record.from;
    m_log.write(m_record.storedName.empty() ? "upload \"" + offeredName() + "\" counted" + size
                                            : "upload stored as \"" + m_record.storedName + "\"" + size);
    m_state.recordUpload(m_record);
}

/// The header field has the name as it is; in the part a quotation mark would end it.
std::string UploadExchange::offeredName() const
{
    return m_record.srcfilename.empty() ? m_record.fileName : m_record.srcfilename;
}

std::optional<Answer> UploadExchange::refusal() const
{
    if (!m_badRequest.empty())
        return lineAnswer(400, m_badRequest);
    if (!m_storageProblem.empty())
        return lineAnswer(500, "cannot store the file: " + m_storageProblem);
    return std::nullopt;
}

Outcome UploadExchange::chosenAnswer() const
{
    switch (m_mode.kind) {
    case Kind::Status:
        return Answer{m_mode.status, ""};
    case Kind::DiskFull:
        return lineAnswer(500, "cannot store the file: No space left on device");
    case Kind::Cut:
        return Answer{200, GeneratedBody{cutPromise, cutPromise / 2}};
    case Kind::Silence:
        if (m_state.uploadReply().kind == Kind::Silence)
            return Wait();
        break;
    default:
        break;
    }
    return Answer{200, "OK"};
}

} // namespace companion::simulator
