#pragma once

#include "platform/HttpSession.h"

#include <chrono>
#include <cstdint>
#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace companion {

/// One request on its way through libcurl. Made on any thread, then used on the delivery thread only.
///
/// Ended by exactly one of `fail` and `finish`, or dropped.
class CurlTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// Limits a whole reply: interim responses, header and trailer fields, body and framing.
    static constexpr std::size_t maximumReply = 16 << 20;

    /// What each header line counts in addition to its bytes: roughly what libcurl allocates to keep it.
    static constexpr std::size_t headerLineOverhead = 128;

    CurlTransfer(HttpRequest request, HttpCompletion completion);
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// The transfer that a libcurl handle belongs to.
    static CurlTransfer& of(CURL* handle);

    /// Sets the handle up. What is wrong with the request, or nothing.
    std::optional<std::string> prepare();

    /// Null until it is prepared.
    CURL* handle() const { return m_handle.get(); }

    void reportProgress();

    /// Measures what has moved. An error if that was nothing for too long, or too much.
    CURLcode check(TimePoint now);

    /// When `check` may find the transfer idle for too long.
    TimePoint deadline() const { return m_lastActivity + m_request.timeout; }

    void fail(std::string error);

    /// Calls the completion with what came, given libcurl's result.
    void finish(CURLcode result);

private:
    void setOptions();
    void setCallbacks();
    std::optional<std::string> setHeaders();
    void appendHeader(const std::string& line);
    bool hasHeader(const char* name) const;
    template <typename Value> void set(CURLoption option, Value value);
    template <typename Value> Value info(CURLINFO name) const;

    bool makeRoom(std::size_t bytes);
    void takeHeaderLine(std::string_view line);
    bool hasWholeReply(CURLcode result) const;
    std::vector<HttpHeader> replyHeaders() const;
    std::string errorText(CURLcode result) const;

    static std::size_t readBody(char* target, std::size_t size, std::size_t count, void* transfer);
    static std::size_t onHeaderLine(char* data, std::size_t size, std::size_t count, void* transfer);
    static std::size_t onBody(char* data, std::size_t size, std::size_t count, void* transfer);
    static int onSocket(void* transfer, curl_socket_t socket, curlsocktype purpose);

    struct HandleDeleter {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    HttpRequest m_request;
    HttpCompletion m_completion;
    std::unique_ptr<curl_slist, ListDeleter> m_headerLines;
    CURLcode m_setUp = CURLE_OK; ///< The first error while the handle was set up.
    char m_errorBuffer[CURL_ERROR_SIZE] = "";

    std::uint64_t m_bodySize = 0;
    std::size_t m_bodyPiece = 0;
    std::size_t m_bodyOffset = 0;
    bool m_isGivenUp = false; ///< By who sent the request.

    std::optional<int> m_status; ///< Of the header section that is read at present, then of the reply.
    bool m_hasFinalHeaders = false;
    std::size_t m_replySize = 0;
    std::string m_body;

    curl_socket_t m_socket = CURL_SOCKET_BAD;
    std::uint64_t m_bytesMoved = 0;
    TimePoint m_lastActivity;
    std::unique_ptr<CURL, HandleDeleter> m_handle; ///< Last, since it uses the others until it is gone.
};

} // namespace companion
