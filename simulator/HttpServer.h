#pragma once

#include <chrono>
#include <cstdint>
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

class HeldConnections;

/// The head of a request. Valid, with all that it hands out, while its exchange lives.
class Request {
public:
    Request(MHD_Connection* connection, std::string method, std::string path);

    const std::string& method() const { return m_method; }
    const std::string& path() const { return m_path; }
    const std::string& peer() const { return m_peer; } ///< dotted IPv4 text
    MHD_Connection* connection() const { return m_connection; }

    /// Of what comes more than once, the first; nothing when it is missing. Query keys are told apart by case.
    std::optional<std::string> header(const char* name) const;
    std::optional<std::string> query(const char* name) const;

private:
    MHD_Connection* m_connection;
    std::string m_method;
    std::string m_path;
    std::string m_peer;
};

/// A body that is made while it is sent.
struct GeneratedBody {
    std::optional<std::uint64_t> promised; ///< its Content-Length; nothing: chunked
    /// What comes before the connection breaks off; nothing: it never ends
    std::optional<std::uint64_t> given;
};

/// An open file, closed with the last of its copies.
class OpenFile {
public:
    explicit OpenFile(int fd)
        : m_fd(fd)
    {
    }
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    int fd() const { return m_fd; }

private:
    int m_fd;
};

/// The first `size` bytes of a file, read while they are sent.
struct FileBody {
    std::shared_ptr<const OpenFile> file;
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

/// One line of text, its end included.
Answer lineAnswer(unsigned status, const std::string& line);

/// What an exchange wants next.
struct ReadOn { };
struct HangUp { };          ///< close without an answer
struct ResetConnection { }; ///< the client sees "connection reset"
struct Wait {
    std::optional<std::chrono::milliseconds> time; ///< nothing: until HeldConnections::wakeAll
};
using Outcome = std::variant<ReadOn, Answer, HangUp, ResetConnection, Wait>;

/// One request and its answer. Its calls come on the server's thread, in this order.
class Exchange {
public:
    virtual ~Exchange() = default;

    /// Anything but ReadOn and Wait answers before the body is read, and ends the connection.
    virtual Outcome headArrived() = 0;
    /// `used` is how much of `data` was taken; all of it unless changed. The rest comes again, after a Wait. An Answer
    /// is not possible here.
    virtual Outcome bodyArrived(std::string_view data, std::size_t& used) = 0;
    /// Called again after each Wait. ReadOn is not possible here.
    virtual Outcome requestComplete() = 0;
};

/// An HTTP server on one address and port, with a thread of its own for all its connections.
class HttpServer {
public:
    using OpenExchange = std::function<std::unique_ptr<Exchange>(const Request&)>;

    /// Serves at once. `held` and what `open` touches outlive the server. Throws std::system_error when the port
    /// is taken or the address is not this computer's.
    HttpServer(const std::string& address, std::uint16_t port, HeldConnections& held, OpenExchange open);
    /// Needs `held` to be stopped.
    ~HttpServer();

    /// The port that was given, or the one that was found for 0.
    std::uint16_t port() const { return m_port; }

private:
    class Call;
    struct Callbacks;

    HeldConnections& m_held;
    OpenExchange m_open;
    int m_socket = -1;
    std::uint16_t m_port = 0;
    MHD_Daemon* m_daemon = nullptr;
};

} // namespace companion::simulator
