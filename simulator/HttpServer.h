#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct MHD_Connection;
struct MHD_Daemon;

namespace companion::simulator {

/// The head of a request. Valid while its exchange lives, on the connection's thread.
class Request {
public:
    Request(MHD_Connection* connection, std::string method, std::string path);

    const std::string& method() const { return m_method; }
    const std::string& path() const { return m_path; }
    const std::string& peer() const { return m_peer; } ///< dotted IPv4 text
    MHD_Connection* connection() const { return m_connection; }
    int socket() const;

    /// The first occurrence; nothing if there is none. Query keys are case-sensitive.
    std::optional<std::string> header(const char* name) const;
    std::optional<std::string> query(const char* name) const;

    /// Blocks for `time`. Returns false, early, once the client has disconnected or the server stops.
    bool wait(std::chrono::milliseconds time) const;

private:
    MHD_Connection* m_connection;
    std::string m_method;
    std::string m_path;
    std::string m_peer;
};

/// A body of filler, generated while it is sent.
struct GeneratedBody {
    std::optional<std::uint64_t> promised; ///< its Content-Length; nothing: chunked
    std::optional<std::uint64_t> given;    ///< bytes sent before the connection is closed; nothing: endless
};

/// The first `size` bytes of a file, read while they are sent.
struct FileBody {
    std::shared_ptr<std::FILE> file;
    std::uint64_t size = 0;
};

struct HeaderField {
    const char* name;
    std::string value;
};

struct Answer {
    unsigned status = 200;
    std::variant<std::string, GeneratedBody, FileBody> body{};
    std::string contentType = "text/plain; charset=utf-8";
    std::vector<HeaderField> fields{};
};

/// `line` as the body, with a line end.
Answer lineAnswer(unsigned status, const std::string& line);
Answer unknownPath(const Request& request);
Answer wrongMethod(const std::string& allowed);

struct HangUp { };          ///< close without an answer
struct ResetConnection { }; ///< the client sees "connection reset"
using Outcome = std::variant<Answer, HangUp, ResetConnection>;

/// One request and its answer. Called on the connection's own thread, which its functions may block.
class Exchange {
public:
    virtual ~Exchange() = default;

    /// An outcome ends the exchange before the body is read; nothing reads on.
    virtual std::optional<Outcome> headArrived() = 0;
    /// The same, but an Answer is not possible here.
    virtual std::optional<Outcome> bodyArrived(std::string_view data) = 0;
    virtual Outcome requestComplete() = 0;
};

using Handler = std::function<Outcome(const Request& request, const std::string& body)>;

/// Calls `handler` with the whole body, which is limited to 1 MiB.
std::unique_ptr<Exchange> collectBody(const Request& request, Handler handler);

/// An HTTP server on one address and port, with a thread for each connection.
class HttpServer {
public:
    using OpenExchange = std::function<std::unique_ptr<Exchange>(const Request&)>;

    /// Serves at once. What `open` uses must outlive the server. Connections that are idle for `idleTimeout` are closed.
    /// Throws std::system_error if the port is taken or the address is not this computer's.
    HttpServer(const std::string& address, std::uint16_t port, OpenExchange open,
        std::chrono::seconds idleTimeout = std::chrono::seconds(30));
    /// Closes all connections; exchanges that wait are woken by that.
    ~HttpServer();
    HttpServer(const HttpServer&) = delete;
    HttpServer& operator=(const HttpServer&) = delete;

    /// The port in use; for port 0, the one that the system chose.
    std::uint16_t port() const { return m_port; }

private:
    struct Callbacks;

    const OpenExchange m_open;
    int m_socket = -1;
    std::uint16_t m_port = 0;
    MHD_Daemon* m_daemon = nullptr;
};

} // namespace companion::simulator
