#include "platform/curl/CurlTransfer.h"

#include "platform/curl/RequestCheck.h"
#include "platform/curl/TcpActivity.h"

#include <algorithm>
#include <cstring>
#include <unistd.h>
#include <utility>

namespace companion {

namespace {

// Fewer and larger pieces of a file cost less processor time; libcurl's own choice is 64 KiB. Larger ones yet would make
// small files wait for the memory of the first.
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

/// Methods whose requests tell a length even without a body (RFC 9110, section 8.6).
bool expectsBody(const std::string& method)
{
    return method == "POST" || method == "PUT" || method == "PATCH";
}

/// These are about framing, which is libcurl's; "Expect" would hold the body back.
bool isFramingField(const std::string& name)
{
    return isSameFieldName(name, "Transfer-Encoding") || isSameFieldName(name, "Expect");
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request, HttpCompletion completion)
    : m_request(std::move(request))
    , m_completion(std::move(completion))
    , m_bodySize(sizeOf(m_request.body))
    , m_handle(curl_easy_init())
{
}

CurlTransfer::~CurlTransfer() = default;

CurlTransfer& CurlTransfer::of(CURL* handle)
{
    char* transfer = nullptr;
    curl_easy_getinfo(handle, CURLINFO_PRIVATE, &transfer);
    return *reinterpret_cast<CurlTransfer*>(transfer);
}

std::optional<std::string> CurlTransfer::prepare(TimePoint now)
{
    if (!m_handle)
        return "libcurl has no memory";
    if (auto fault = faultOf(m_request))
        return fault;
    m_lastActivity = now;
    m_idleDeadline = now + m_request.timeout;
    if (m_request.longestDuration)
        m_end = now + *m_request.longestDuration;
    setOptions();
    setCallbacks();
    setMethodAndBody();
    setHeaders();
    return std::nullopt;
}

void CurlTransfer::setOptions()
{
    CURL* handle = m_handle.get();
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle, CURLOPT_URL, m_request.url.text.c_str());
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, long(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(handle, CURLOPT_HTTP09_ALLOWED, 0L);
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(handle, CURLOPT_PROXY, ""); // the environment's as well
    curl_easy_setopt(handle, CURLOPT_NOPROXY, "*");
    // On a connection that turns out to be dead libcurl would send the request once more.
    curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, 1L);
    curl_easy_setopt(handle, CURLOPT_FORBID_REUSE, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); // a name server that is silent does not hold up our end
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, uploadBuffer);
    // Connecting is part of the idle time, which is watched here; libcurl's own limit must not come first.
    curl_easy_setopt(
        handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(m_request.timeout.count()) + 60'000);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, m_errorBuffer);
}

void CurlTransfer::setCallbacks()
{
    CURL* handle = m_handle.get();
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &CurlTransfer::takeHeaderLine);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &CurlTransfer::takeBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle, CURLOPT_READFUNCTION, &CurlTransfer::readBody);
    curl_easy_setopt(handle, CURLOPT_READDATA, this);
    curl_easy_setopt(handle, CURLOPT_SOCKOPTFUNCTION, &CurlTransfer::noteSocket);
    curl_easy_setopt(handle, CURLOPT_SOCKOPTDATA, this);
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETFUNCTION, &CurlTransfer::closeSocket);
    curl_easy_setopt(handle, CURLOPT_CLOSESOCKETDATA, this);
}

void CurlTransfer::setMethodAndBody()
{
    CURL* handle = m_handle.get();
    if (announcesLength()) {
        curl_easy_setopt(handle, CURLOPT_POST, 1L);
        curl_easy_setopt(handle, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_bodySize));
    } else if (m_request.method == "HEAD") {
        curl_easy_setopt(handle, CURLOPT_NOBODY, 1L);
    }
    curl_easy_setopt(handle, CURLOPT_CUSTOMREQUEST, m_request.method.c_str());
}

/// The request's fields in its own order, the length in the place that the request gives it.
void CurlTransfer::setHeaders()
{
    const std::string length = "Content-Length: " + std::to_string(m_bodySize);
    bool hasLength = !announcesLength();
    for (const HttpHeader& header : m_request.headers) {
        if (isSameFieldName(header.name, "Content-Length")) {
            if (!std::exchange(hasLength, true))
                appendHeader(length);
        } else if (!isFramingField(header.name)) {
            // A field without a value is marked by a semicolon, or libcurl would take it for one to leave out.
            const bool isBlank = header.value.find_first_not_of(" \t") == std::string::npos;
            appendHeader(header.name + (isBlank ? ";" : ": " + header.value));
        }
    }
    if (!hasLength)
        appendHeader(length);

    // What libcurl would add by itself.
    for (const char* name : {"Accept", "Content-Type", "Expect"}) {
        if (!hasHeader(name) || isFramingField(name))
            appendHeader(std::string(name) + ":");
    }
    curl_easy_setopt(m_handle.get(), CURLOPT_HTTPHEADER, m_headerLines.get());
}

void CurlTransfer::appendHeader(const std::string& line)
{
    if (curl_slist* list = curl_slist_append(m_headerLines.get(), line.c_str())) {
        m_headerLines.release(); // the list's first element stays what it is
        m_headerLines.reset(list);
    }
}

bool CurlTransfer::hasHeader(const std::string& name) const
{
    return std::any_of(m_request.headers.begin(), m_request.headers.end(),
        [&](const HttpHeader& header) { return isSameFieldName(header.name, name); });
}

bool CurlTransfer::announcesLength() const
{
    return m_request.method != "HEAD" && (m_request.body.has_value() || expectsBody(m_request.method));
}

void CurlTransfer::reportProgress()
{
    if (!m_request.body || !m_request.progress)
        return;
    curl_off_t sent = 0;
    curl_easy_getinfo(m_handle.get(), CURLINFO_SIZE_UPLOAD_T, &sent);
    const auto bytes = static_cast<std::uint64_t>(sent);
    if (bytes != m_sentReported.value_or(0)) {
        m_sentReported = bytes;
        m_request.progress(bytes, m_bodySize);
    }
}

/// The kernel's byte counts are asked, not libcurl's: those know nothing of header bytes, and count as sent what
/// waits in the socket's buffer.
bool CurlTransfer::isOutOfTime(TimePoint now)
{
    if (now >= m_end)
        return true;
    if (now < m_idleDeadline)
        return false;
    std::uint64_t bytes = 0;
    auto sinceLast = std::chrono::milliseconds::max();
    bool isHeldBack = false;
    for (const curl_socket_t socket : m_sockets) {
        const TcpActivity activity = tcpActivity(socket);
        bytes += activity.bytes;
        sinceLast = std::min(sinceLast, activity.sinceLast);
        isHeldBack = isHeldBack || activity.isHeldBack;
    }
    if (bytes != m_bytesSeen && !m_sockets.empty()) {
        m_bytesSeen = bytes;
        m_lastActivity = std::max(m_lastActivity, now - sinceLast);
    }
    m_idleDeadline = m_lastActivity + m_request.timeout;
    if (now >= m_idleDeadline && isHeldBack
        && !hasWholeReply()) // and it is looked again whether the other side still lives
        m_idleDeadline =
            std::min(now + m_request.timeout, m_lastActivity + idleTimesHeldBack * m_request.timeout);
    return now >= m_idleDeadline;
}

void CurlTransfer::fail(std::string error)
{
    m_completion({std::nullopt, std::nullopt, std::move(error)});
}

void CurlTransfer::finish(CURLcode result)
{
    if (!m_refusal.empty()) {
        fail(m_refusal);
        return;
    }
    // A server that wants no more of the body answers and closes: sending fails, and the answer counts.
    const bool isWhole = result == CURLE_OK ? m_reply.hasFinalHeaders() : hasWholeReply();
    if (!isWhole) {
        fail(errorText(result));
        return;
    }
    UrlResponse response{m_request.url, m_reply.statusCode(), m_reply.headers()};
    m_completion({m_reply.takeBodyOut(), std::move(response), std::nullopt});
}

/// Whether the reply has nothing more to come by its status or the length that it told (RFC 9112, section 6.3). One in
/// chunks never has: libcurl keeps their end to itself. It counts only if libcurl is content, which it is with early
/// answers of status 400 and above, as it then stops sending.
bool CurlTransfer::hasWholeReply() const
{
    if (!m_reply.hasFinalHeaders())
        return false;
    const int status = m_reply.statusCode();
    if (m_reply.isSwitchingProtocols() || status == 204 || status == 304 || m_request.method == "HEAD")
        return true;
    curl_off_t length = -1;
    curl_easy_getinfo(m_handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &length);
    return length >= 0 && m_reply.body().size() == static_cast<std::uint64_t>(length);
}

std::string CurlTransfer::errorText(CURLcode result) const
{
    if (result == CURLE_OK)
        return "The reply was cut off";
    if (result == CURLE_OPERATION_TIMEDOUT)
        return "The request timed out";
    return m_errorBuffer[0] ? m_errorBuffer : curl_easy_strerror(result);
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

std::size_t CurlTransfer::takeHeaderLine(char* data, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<CurlTransfer*>(transfer);
    if (!self.m_reply.takeHeaderLine({data, size * count})) {
        self.m_refusal = "The reply's header fields are too long";
        return 0;
    }
    return self.m_reply.isSwitchingProtocols() ? 0 : size * count; // what follows a switch is not HTTP
}

std::size_t CurlTransfer::takeBody(char* data, std::size_t size, std::size_t count, void* transfer)
{
    auto& self = *static_cast<CurlTransfer*>(transfer);
    curl_off_t announced = -1;
    curl_easy_getinfo(self.m_handle.get(), CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
    if (announced <= static_cast<curl_off_t>(ReplyCollector::maximumBody)
        && self.m_reply.takeBody({data, size * count}))
        return size * count;
    self.m_refusal = "The reply is too long";
    return 0;
}

int CurlTransfer::noteSocket(void* transfer, curl_socket_t socket, curlsocktype)
{
    static_cast<CurlTransfer*>(transfer)->m_sockets.push_back(socket);
    return CURL_SOCKOPT_OK;
}

int CurlTransfer::closeSocket(void* transfer, curl_socket_t socket)
{
    std::erase(static_cast<CurlTransfer*>(transfer)->m_sockets, socket);
    return close(socket);
}

} // namespace companion
