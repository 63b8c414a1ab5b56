#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace companion::testing {

/// What came back on a connection, byte for byte.
struct HttpReply {
    int status = 0;   ///< 0: no answer
    std::string head; ///< status line and fields
    std::string body;
    bool isReset = false;  ///< the connection ended in "connection reset"
    bool isClosed = false; ///< the other side closed it, or reset it
};

/// A TCP connection to a server on this computer, for bytes of the test's own choice.
class HttpClient {
public:
    static constexpr std::chrono::milliseconds patience{10'000};

    HttpClient(const std::string& address, std::uint16_t port);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    /// False when the other side takes no more.
    bool send(const std::string& bytes);

    /// Reads until an answer framed by its Content-Length is whole, the connection ends, the time is over, or
    /// `maxBody` bytes of body have come.
    HttpReply receive(std::chrono::milliseconds time = patience, std::size_t maxBody = SIZE_MAX);

private:
    int m_fd = -1;
};

/// "METHOD target HTTP/1.1", the fields (each with its line end), Content-Length, and the body.
std::string httpRequest(const std::string& method, const std::string& target, const std::string& body = "",
    const std::string& fields = "");

} // namespace companion::testing
