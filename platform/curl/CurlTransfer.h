#pragma once

#include "platform/curl/ReplyCollector.h"
#include "platform/HttpSession.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <curl/curl.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// One request on its way through libcurl. Made on any thread, then used on the delivery thread only.
///
/// Ended by exactly one of `fail` and `finish`, or dropped.
class CurlTransfer {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    /// A server that has no room for more of the body, and says so, is waited for so many idle times. Its window opens
    /// again by whole segments only: one that reads a byte a second needs 25 idle times of a minute for the 1,460 bytes
    /// of an Ethernet segment, in which not a byte flows, and cannot be told from one that reads no more.
    static constexpr int idleTimesHeldBack = 30;

    CurlTransfer(HttpRequest request, HttpCompletion completion);
    ~CurlTransfer();
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// The transfer that a libcurl handle belongs to.
    static CurlTransfer& of(CURL* handle);

    /// Sets the handle up; `now` begins the idle time. What is wrong with the request, or nothing.
    std::optional<std::string> prepare(TimePoint now);

    CURL* handle() const { return m_handle.get(); }

    void reportProgress();

    /// When its time is over at the earliest: only then need `isOutOfTime` be asked.
    TimePoint deadline() const { return std::min(m_idleDeadline, m_end); }
    bool isOutOfTime(TimePoint now);

    void fail(std::string error);

    /// Calls the completion with what came, given libcurl's result.
    void finish(CURLcode result);

private:
    void setOptions();
    void setCallbacks();
    void setMethodAndBody();
    void setHeaders();
    void appendHeader(const std::string& line);
    bool hasHeader(const std::string& name) const;
    bool announcesLength() const;
    bool hasWholeReply() const;
    std::string errorText(CURLcode result) const;

    static std::size_t readBody(char* target, std::size_t size, std::size_t count, void* transfer);
    static std::size_t takeHeaderLine(char* data, std::size_t size, std::size_t count, void* transfer);
    static std::size_t takeBody(char* data, std::size_t size, std::size_t count, void* transfer);
    static int noteSocket(void* transfer, curl_socket_t socket, curlsocktype purpose);
    static int closeSocket(void* transfer, curl_socket_t socket);

    struct HandleDeleter {
        void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
    };
    struct ListDeleter {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    HttpRequest m_request;
    HttpCompletion m_completion;
    std::vector<curl_socket_t> m_sockets;
    std::unique_ptr<curl_slist, ListDeleter> m_headerLines;
    char m_errorBuffer[CURL_ERROR_SIZE] = "";
    std::string m_refusal; ///< Why the reply is not taken, "" when it is.

    std::uint64_t m_bodySize = 0;
    std::size_t m_bodyPiece = 0;
    std::size_t m_bodyOffset = 0;
    std::optional<std::uint64_t> m_sentReported;

    ReplyCollector m_reply;
    TimePoint m_lastActivity;
    TimePoint m_idleDeadline;
    TimePoint m_end = TimePoint::max(); ///< of the longest duration
    std::uint64_t m_bytesSeen = 0;
    std::unique_ptr<CURL, HandleDeleter> m_handle; ///< Last, since it uses the others until it is gone.
};

} // namespace companion
