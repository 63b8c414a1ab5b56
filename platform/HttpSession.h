#pragma once

#include "platform/SharedBytes.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace companion {

/// A well-formed http URL, as `urlFromText` returns it.
struct Url {
    std::string text;

    bool operator==(const Url&) const = default;
};

/// `text` as a URL: "http", a host name or IPv4 address, an optional port, and only characters that RFC 3986 allows
/// there. Anything else is none: a blank, a control character, a stray "%", a letter beyond ASCII. Nothing is
/// percent-encoded. Any thread.
std::optional<Url> urlFromText(const std::string& text);

struct HttpHeader {
    std::string name;
    std::string value;

    bool operator==(const HttpHeader&) const = default;
};

enum class HttpMethod { get, post };

/// Pieces of bytes that are sent one after the other, without being joined in memory.
using HttpBody = std::vector<SharedBytes>;

/// Bytes sent of the body, and bytes of the body in all. False fails the request. Delivery thread, at least once a
/// second.
using HttpProgress = std::function<bool(std::uint64_t sent, std::uint64_t total)>;

/// The cache policy is the protocol's default unless a header field changes it; sessions keep no cache.
struct HttpRequest {
    Url url;
    HttpMethod method = HttpMethod::get;
    /// In sending order. The session frames the message: the body's real length replaces a "Content-Length" given here.
    std::vector<HttpHeader> headers;
    std::optional<HttpBody> body; ///< Sent with `HttpMethod::post` only.
    /// The request fails when no byte has moved in either direction for so long, connecting included.
    std::chrono::milliseconds timeout = std::chrono::seconds(60);
    /// The request fails after so long even if bytes still move.
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

    /// Starts the request and returns at once. Any thread. Completions that have not run when the session is
    /// destroyed are dropped.
    virtual void send(HttpRequest request, HttpCompletion completion) = 0;
};

} // namespace companion
