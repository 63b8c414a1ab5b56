#include "platform/curl/CurlTransfer.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <linux/tcp.h> // the C library's own tcp_info ends before the byte counts
#include <netinet/in.h>
#include <sys/socket.h>
#include <utility>

namespace companion {

namespace {

// Larger pieces of a file cost less processor time than libcurl's 64 KiB. Even larger ones would make small files wait
// for the memory of the first.
constexpr long uploadBuffer = 256 << 10;

std::uint64_t sizeOf(const std::optional<HttpBody>& body)
{
    std::uint64_t size = 0;
    if (body) {
        for (const auto& piece : *body)
            size += piece->size();
    }
    return size;
}

/// The three digits behind the version; 0 if there are none. libcurl's own reading takes "http/1.1 404" for 200.
int statusOf(std::string_view statusLine)
{
    constexpr std::string_view blanks = " \t";
    const std::size_t blank = std::min(statusLine.find_first_of(blanks), statusLine.size());
    const std::size_t digits = std::min(statusLine.find_first_not_of(blanks, blank), statusLine.size());
    const std::string_view text = statusLine.substr(digits, 3);
    int status = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), status);
    return error == std::errc() && end == text.data() + 3 && status >= 100 ? status : 0;
}

/// False if libcurl has picked one of several lengths, or the digits at the start of a text (RFC 9112, section 6.3).
bool hasOneLength(const std::vector<HttpHeader>& headers)
{
    const std::string* length = nullptr;
    for (const HttpHeader& header : headers) {
        if (!curl_strequal(header.name.c_str(), "Content-Length"))
            continue;
        if (header.value.find_first_not_of("0123456789") != std::string::npos
            || (length && *length != header.value))
            return false;
        length = &header.value;
    }
    return true;
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request, HttpCompletion completion)
    : m_request(std::move(request))
    , m_completion(std::move(completion))
    , m_bodySize(sizeOf(m_request.body))
{
}

CurlTransfer& CurlTransfer::of(CURL* handle)
{
    char* transfer = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return *reinterpret_cast<CurlTransfer*>(transfer);
}

std::optional<std::string> CurlTransfer::prepare()
{
    m_handle.reset(curl_easy_init());
    if (!m_handle)
        return "libcurl has no memory";
    m_lastActivity = std::chrono::steady_clock::now();
    setOptions();
    setCallbacks();
    if (auto error = setHeaders())
        return error;
    if (m_setUp != CURLE_OK)
        return curl_easy_strerror(m_setUp);
    return std::nullopt;
}

void CurlTransfer::setOptions()
{
    set(CURLOPT_PRIVATE, static_cast<void*>(this));
    set(CURLOPT_ERRORBUFFER, m_errorBuffer);
    set(CURLOPT_URL, m_request.url.text.c_str());
    set(CURLOPT_PATH_AS_IS, 1L);
    set(CURLOPT_PROTOCOLS_STR, "http");
    set(CURLOPT_PROXY, ""); // the environment's as well
    // On a reused connection that is dead, libcurl would send the request again.
    set(CURLOPT_FORBID_REUSE, 1L);
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_request.timeout.count()));
    if (m_request.longestDuration)
        set(CURLOPT_TIMEOUT_MS, static_cast<long>(m_request.longestDuration->count()));
    // A length that does not even fit into a number counts as too long, instead of as none.
    set(CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(maximumReply));
    if (m_request.method == HttpMethod::post) {
        set(CURLOPT_POST, 1L);
        set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_bodySize));
        set(CURLOPT_UPLOAD_BUFFERSIZE, uploadBuffer);
    }
}

void CurlTransfer::setCallbacks()
{
    set(CURLOPT_HEADERFUNCTION, &CurlTransfer::onHeaderLine);
    set(CURLOPT_HEADERDATA, static_cast<void*>(this));
    set(CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(this));
    set(CURLOPT_READFUNCTION, &CurlTransfer::readBody);
    set(CURLOPT_READDATA, static_cast<void*>(this));
    set(CURLOPT_SOCKOPTFUNCTION, &CurlTransfer::onSocket);
    set(CURLOPT_SOCKOPTDATA, static_cast<void*>(this));
}

/// The request's fields in its own order, with the real length in place of the one given.
std::optional<std::string> CurlTransfer::setHeaders()
{
    for (const HttpHeader& header : m_request.headers) {
        if (header.value.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos)
            return "the header field \"" + header.name + "\" holds a line break or a NUL";
        if (curl_strequal(header.name.c_str(), "Content-Length")) {
            if (m_request.method == HttpMethod::post)
                appendHeader("Content-Length: " + std::to_string(m_bodySize));
        } else {
            // libcurl leaves a field without a value out, unless a semicolon marks it.
            const bool isBlank = header.value.find_first_not_of(" \t") == std::string::npos;
            appendHeader(header.name + (isBlank ? ";" : ": " + header.value));
        }
    }
    for (const char* name : {"Accept", "Content-Type", "Expect"}) { // what libcurl would add
        if (!hasHeader(name))
            appendHeader(std::string(name) + ":");
    }
    set(CURLOPT_HTTPHEADER, m_headerLines.get());
    return std::nullopt;
}

void CurlTransfer::appendHeader(const std::string& line)
{
    curl_slist* list = curl_slist_append(m_headerLines.get(), line.c_str());
    if (!list) {
        m_setUp = CURLE_OUT_OF_MEMORY;
        return;
    }
    m_headerLines.release(); // the list's first element stays what it is
    m_headerLines.reset(list);
}

bool CurlTransfer::hasHeader(const char* name) const
{
    return std::any_of(m_request.headers.begin(), m_request.headers.end(),
        [&](const HttpHeader& header) { return curl_strequal(header.name.c_str(), name); });
}

template <typename Value> void CurlTransfer::set(CURLoption option, Value value)
{
    if (m_setUp == CURLE_OK)
        m_setUp = curl_easy_setopt(m_handle.get(), option, value);
}

template <typename Value> Value CurlTransfer::info(CURLINFO name) const
{
    Value value{};
    curl_easy_getinfo(m_handle.get(), name, &value);
    return value;
}

void CurlTransfer::reportProgress()
{
    if (!m_request.body || !m_request.progress)
        return;
    const auto sent = static_cast<std::uint64_t>(info<curl_off_t>(CURLINFO_SIZE_UPLOAD_T));
    m_isGivenUp |= !m_request.progress(sent, m_bodySize);
}

/// The kernel's byte counts are used: libcurl's leave out header fields and the framing of chunks, and count as sent
/// what still waits in the socket's buffer.
CURLcode CurlTransfer::check(TimePoint now)
{
    const bool isConnected = info<curl_off_t>(CURLINFO_CONNECT_TIME_T) > 0;
    tcp_info tcp{};
    socklen_t size = sizeof tcp;
    getsockopt(m_socket, IPPROTO_TCP, TCP_INFO, &tcp, &size);
    const std::uint64_t moved = tcp.tcpi_bytes_received + tcp.tcpi_bytes_acked;
    if (!isConnected || moved != std::exchange(m_bytesMoved, moved))
        m_lastActivity = now; // connecting has libcurl's own time-out
    if (tcp.tcpi_bytes_received > maximumReply)
        return CURLE_FILESIZE_EXCEEDED;
    if (m_isGivenUp)
        return CURLE_ABORTED_BY_CALLBACK;
    return now >= deadline() ? CURLE_OPERATION_TIMEDOUT : CURLE_OK;
}

void CurlTransfer::fail(std::string error)
{
    m_completion({std::nullopt, std::nullopt, std::move(error)});
}

void CurlTransfer::finish(CURLcode result)
{
    const bool isWhole = result == CURLE_OK ? m_hasFinalHeaders : hasWholeReply(result);
    if (!isWhole || m_isGivenUp) {
        fail(errorText(result));
        return;
    }
    UrlResponse response{m_request.url, m_status, replyHeaders()};
    if (!hasOneLength(response.headers)) {
        fail("The reply's length is ambiguous");
        return;
    }
    m_completion({std::move(m_body), std::move(response), std::nullopt});
}

/// Whether the reply is complete although the connection failed, as it does when the server answers before it has read
/// the whole request, and then closes (RFC 9112, section 6.3).
bool CurlTransfer::hasWholeReply(CURLcode result) const
{
    if (!m_hasFinalHeaders)
        return false;
    if (m_status == 101)
        return true;
    const auto length = info<curl_off_t>(CURLINFO_CONTENT_LENGTH_DOWNLOAD_T);
    if (length >= 0)
        return m_body.size() == static_cast<std::uint64_t>(length);
    // Without a length the connection's end is the reply's, and after unread bytes a close looks like a reset. That is
    // enough to report an error status, but not a success.
    curl_header* encoding = nullptr;
    const bool isChunked =
        curl_easy_header(handle(), "Transfer-Encoding", 0, CURLH_HEADER, -1, &encoding) == CURLHE_OK;
    const bool isClosed = result == CURLE_SEND_ERROR || result == CURLE_RECV_ERROR;
    return m_status >= 400 && m_bodySize > 0 && isClosed && !isChunked;
}

std::vector<HttpHeader> CurlTransfer::replyHeaders() const
{
    std::vector<HttpHeader> headers;
    for (curl_header* header = nullptr;
         (header = curl_easy_nextheader(handle(), CURLH_HEADER, -1, header)) != nullptr;)
        headers.push_back({header->name, header->value});
    return headers;
}

std::string CurlTransfer::errorText(CURLcode result) const
{
    if (result == CURLE_FILESIZE_EXCEEDED || m_replySize > maximumReply)
        return "The reply is too long";
    if (m_status == 0)
        return "The reply has no status";
    if (result == CURLE_OK)
        return "The reply was cut off";
    if (result == CURLE_OPERATION_TIMEDOUT)
        return "The request timed out";
    return m_errorBuffer[0] ? m_errorBuffer : curl_easy_strerror(result);
}

bool CurlTransfer::makeRoom(std::size_t bytes)
{
    m_replySize += bytes;
    return m_replySize <= maximumReply;
}

/// Interim responses (1xx) precede the final one, except for a 101, after which the connection would speak another
/// protocol (RFC 9110, section 15.2.2). Trailer fields follow it.
void CurlTransfer::takeHeaderLine(std::string_view line)
{
    if (m_hasFinalHeaders)
        return;
    if (!m_status)
        m_status = statusOf(line);
    if (line != "\r\n" && line != "\n")
        return;
    m_hasFinalHeaders = m_status >= 200 || m_status == 101;
    if (!m_hasFinalHeaders)
        m_status.reset();
}

std::size_t CurlTransfer::readBody(char* target, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<CurlTransfer*>(transfer);
    const std::size_t room = size * count;
    std::size_t filled = 0;
    while (self.m_request.body && filled < room && self.m_bodyPiece < self.m_request.body->size()) {
        const std::string_view piece = *(*self.m_request.body)[self.m_bodyPiece];
        const std::size_t length = std::min(room - filled, piece.size() - self.m_bodyOffset);
        std::memcpy(target + filled, piece.data() + self.m_bodyOffset, length);
        filled += length;
        self.m_bodyOffset += length;
        if (self.m_bodyOffset == piece.size()) {
            ++self.m_bodyPiece;
            self.m_bodyOffset = 0;
        }
    }
    return filled;
}

std::size_t CurlTransfer::onHeaderLine(char* data, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<CurlTransfer*>(transfer);
    if (!self.makeRoom(size * count + headerLineOverhead))
        return 0;
    self.takeHeaderLine({data, size * count});
    // What follows a switch of protocols is not HTTP.
    const bool isEnd = self.m_status == 0 || (self.m_status == 101 && self.m_hasFinalHeaders);
    return isEnd ? 0 : size * count;
}

std::size_t CurlTransfer::onBody(char* data, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<CurlTransfer*>(transfer);
    if (!self.makeRoom(size * count))
        return 0;
    self.m_body.append(data, size * count);
    return size * count;
}

int CurlTransfer::onSocket(void* transfer, curl_socket_t socket, curlsocktype)
{
    static_cast<CurlTransfer*>(transfer)->m_socket = socket;
    return CURL_SOCKOPT_OK;
}

} // namespace companion
