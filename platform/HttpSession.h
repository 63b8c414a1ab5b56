#pragma once

#include "platform/SharedBytes.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// A URL that an `HttpSession` has found to be well-formed.
struct Url {
    std::string text;

    bool operator==(const Url&) const = default;
};

struct HttpHeader {
    std::string name;
    std::string value;

    bool operator==(const HttpHeader&) const = default;
};

enum class CachePolicy { useProtocolCachePolicy };

/// Pieces of bytes that are sent one after the other, without being joined in memory.
using HttpBody = std::vector<SharedBytes>;

/// Bytes sent of the body, and bytes of the body in all. Delivery thread, any number of times.
using HttpProgress = std::function<void(std::uint64_t sent, std::uint64_t total)>;

struct HttpRequest {
    Url url;
    std::string method = "GET";
    /// In sending order. Framing is the session's: the body's real length replaces a "Content-Length" given here.
    std::vector<HttpHeader> headers;
    std::optional<HttpBody> body;
    CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
    /// Idle time: nothing sent or received for so long. A server that has no room for more of the body may be waited
    /// for longer, as long as it is there.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// The end of a request for which bytes still flow; nothing waits for as long as they do.
    std::optional<std::chrono::milliseconds> longestDuration;
    HttpProgress progress; ///< May be empty.
};

/// What answered: an HTTP response has a status, anything else has none.
struct UrlResponse {
    Url url;
    std::optional<int> statusCode;
    std::vector<HttpHeader> headers;

    /// One line for diagnostics: URL, status and header fields.
    std::string description() const;
};

/// A complete HTTP response always has data, even if empty; a reply cut off is an error and has none.
struct HttpReply {
    std::optional<std::string> data;
    std::optional<UrlResponse> response;
    std::optional<std::string> error;
};

/// Called exactly once for each request, on the session's delivery thread.
using HttpCompletion = std::function<void(HttpReply)>;

/// Sends HTTP requests, each on its own, with no retry, no redirect, no proxy and no cookie.
class HttpSession {
public:
    virtual ~HttpSession() = default;

    /// The URL that `text` is, or nothing when it is none. Nothing is percent-encoded. Any thread.
    virtual std::optional<Url> urlFromText(const std::string& text) const = 0;

    /// Starts the request and returns at once. Any thread. Completions that have not run when the session is
    /// destroyed are dropped.
    virtual void send(HttpRequest request, HttpCompletion completion) = 0;
};

} // namespace companion
