#include "simulator/HttpServer.h"

#include "simulator/HeldConnections.h"

#include <algorithm>
#include <arpa/inet.h>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr unsigned idleSeconds = 30;
constexpr unsigned maxConnections = 400; // both servers' stay well below the usual 1024 descriptors
constexpr std::size_t connectionMemory = 128 * 1024;
constexpr std::size_t generatedBlock = 64 * 1024;

template <typename... Cases> struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <typename... Cases> Overloaded(Cases...) -> Overloaded<Cases...>;

struct ResponseDeleter {
    void operator()(MHD_Response* response) const { MHD_destroy_response(response); }
};
using Response = std::unique_ptr<MHD_Response, ResponseDeleter>;

int openListener(const std::string& address, std::uint16_t port)
{
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    sockaddr_in local{};
    local.sin_family = AF_INET;
    local.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &local.sin_addr);
    const int yes =
        1; // connections of an earlier run that linger do not keep the port; a listener still does
    if (fd >= 0 && setsockopt(fd, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes) == 0
        && bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local) == 0
        && listen(fd, SOMAXCONN) == 0)
        return fd;
    const std::string where = address + ":" + std::to_string(port);
    const std::system_error error(errno, std::generic_category(), "cannot listen on " + where);
    if (fd >= 0)
        close(fd);
    throw error;
}

std::uint16_t portOf(int fd)
{
    sockaddr_in local{};
    socklen_t size = sizeof local;
    getsockname(fd, reinterpret_cast<sockaddr*>(&local), &size);
    return ntohs(local.sin_port);
}

std::string peerOf(MHD_Connection* connection)
{
    const MHD_ConnectionInfo* info = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
    char text[INET_ADDRSTRLEN] = "";
    if (info && info->client_addr->sa_family == AF_INET)
        inet_ntop(
            AF_INET, &reinterpret_cast<const sockaddr_in*>(info->client_addr)->sin_addr, text, sizeof text);
    return text;
}

/// The library looks names up in any case, which is right for header fields only (RFC 9110, section 5.1).
struct QuerySearch {
    std::string_view name;
    std::optional<std::string> value;
};

MHD_Result compareKey(void* context, MHD_ValueKind, const char* key, const char* value)
{
    auto& search = *static_cast<QuerySearch*>(context);
    if (search.name != key)
        return MHD_YES;
    search.value = value ? value : "";
    return MHD_NO; // found: no more of them
}

/// Called by the library for a piece of at most `room` bytes from `position` on.
ssize_t generate(void* context, std::uint64_t position, char* buffer, std::size_t room)
{
    const auto& body = *static_cast<const GeneratedBody*>(context);
    if (body.given && position >= *body.given)
        return MHD_CONTENT_READER_END_WITH_ERROR;
    const std::size_t size = body.given ? std::min<std::uint64_t>(room, *body.given - position) : room;
    std::memset(buffer, '.', size);
    return static_cast<ssize_t>(size);
}

Response responseOf(const std::string& body)
{
    // The library copies and leaves the original alone; it only asks for a pointer that is not const.
    return Response(
        MHD_create_response_from_buffer(body.size(), const_cast<char*>(body.data()), MHD_RESPMEM_MUST_COPY));
}

Response responseOf(const GeneratedBody& body)
{
    return Response(
        MHD_create_response_from_callback(body.promised.value_or(MHD_SIZE_UNKNOWN), generatedBlock, generate,
            new GeneratedBody(body), [](void* context) { delete static_cast<GeneratedBody*>(context); }));
}

Response responseOf(const FileBody& body)
{
    // The library closes the descriptor that it is given.
    const int own = fcntl(body.file->fd(), F_DUPFD_CLOEXEC, 0);
    Response response(own >= 0 ? MHD_create_response_from_fd64(body.size, own) : nullptr);
    if (!response && own >= 0)
        close(own);
    return response;
}

MHD_Result sendAnswer(MHD_Connection* connection, const Answer& answer)
{
    const Response response = std::visit([](const auto& body) { return responseOf(body); }, answer.body);
    if (!response)
        return MHD_NO;
    MHD_add_response_header(response.get(), MHD_HTTP_HEADER_CONTENT_TYPE, answer.contentType.c_str());
    // Strangers' texts come back in many answers: no browser is to take one for a page or a script.
    MHD_add_response_header(response.get(), "X-Content-Type-Options", "nosniff");
    for (const HeaderField& field : answer.fields)
        MHD_add_response_header(response.get(), field.name, field.value.c_str());
    return MHD_queue_response(connection, answer.status, response.get());
}

/// The library says goodbye in good order to whatever it closes. Connecting to no address dissolves a TCP connection
/// at once, with a reset (connect(2)); the library then finds it gone.
void resetNow(MHD_Connection* connection)
{
    const sockaddr nowhere{AF_UNSPEC, {}};
    const int fd = MHD_get_connection_info(connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
    static_cast<void>(connect(fd, &nowhere, sizeof nowhere));
}

} // namespace

Request::Request(MHD_Connection* connection, std::string method, std::string path)
    : m_connection(connection)
    , m_method(std::move(method))
    , m_path(std::move(path))
    , m_peer(peerOf(connection))
{
}

std::optional<std::string> Request::header(const char* name) const
{
    const char* value = MHD_lookup_connection_value(m_connection, MHD_HEADER_KIND, name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> Request::query(const char* name) const
{
    QuerySearch search{name, std::nullopt};
    MHD_get_connection_values(m_connection, MHD_GET_ARGUMENT_KIND, &compareKey, &search);
    return search.value;
}

OpenFile::~OpenFile()
{
    if (m_fd >= 0)
        close(m_fd);
}

Answer lineAnswer(unsigned status, const std::string& line)
{
    return {status, line + "\n"};
}

/// One request on its way through the library's callbacks.
class HttpServer::Call {
public:
    Call(HttpServer& server, Request request)
        : m_held(server.m_held)
        , m_request(std::move(request))
        , m_exchange(server.m_open(m_request))
    {
    }

    MHD_Result headArrived()
    {
        const std::uint64_t ticket = m_held.ticket();
        return act(m_exchange->headArrived(), ticket);
    }

    MHD_Result goOn(std::string_view data, std::size_t& used)
    {
        if (m_isGone)
            return MHD_NO;
        const std::uint64_t ticket = m_held.ticket();
        return act(
            data.empty() ? m_exchange->requestComplete() : m_exchange->bodyArrived(data, used), ticket);
    }

private:
    MHD_Result act(const Outcome& outcome, std::uint64_t ticket)
    {
        return std::visit(
            Overloaded{[](const ReadOn&) { return MHD_YES; },
                [this](const Answer& answer) { return sendAnswer(m_request.connection(), answer); },
                [](const HangUp&) { return MHD_NO; },
                [this](const ResetConnection&) {
                    resetNow(m_request.connection());
                    return MHD_NO;
                },
                [this, ticket](const Wait& wait) { return hold(wait, ticket); }},
            outcome);
    }

    MHD_Result hold(const Wait& wait, std::uint64_t ticket)
    {
        std::optional<HeldConnections::Time> due;
        if (wait.time)
            due = std::chrono::steady_clock::now() + *wait.time;
        m_held.hold(m_request.connection(), due, ticket, m_isGone);
        return MHD_YES;
    }

    HeldConnections& m_held;
    Request m_request;
    std::unique_ptr<Exchange> m_exchange;
    std::atomic<bool> m_isGone = false;
};

/// No exception may pass through the library, which is written in C: what is thrown ends the one connection.
struct HttpServer::Callbacks {
    static MHD_Result access(void* server, MHD_Connection* connection, const char* url, const char* method,
        const char*, const char* data, std::size_t* size, void** call)
    try {
        if (!*call) {
            *call = new Call(*static_cast<HttpServer*>(server), Request(connection, method, url));
            return static_cast<Call*>(*call)->headArrived();
        }
        std::size_t used = *size;
        const MHD_Result result = static_cast<Call*>(*call)->goOn({data, *size}, used);
        *size -= used;
        return result;
    } catch (const std::exception&) {
        return MHD_NO;
    }

    static void completed(void*, MHD_Connection*, void** call, MHD_RequestTerminationCode)
    {
        delete static_cast<Call*>(std::exchange(*call, nullptr));
    }
};

HttpServer::HttpServer(
    const std::string& address, std::uint16_t port, HeldConnections& held, OpenExchange open)
    : m_held(held)
    , m_open(std::move(open))
    , m_socket(openListener(address, port))
    , m_port(portOf(m_socket))
{
    // Not epoll: the library uses it edge-triggered, and misses a client that goes right after its last bytes.
    m_daemon = MHD_start_daemon(MHD_USE_POLL | MHD_USE_INTERNAL_POLLING_THREAD | MHD_ALLOW_SUSPEND_RESUME, 0,
        nullptr, nullptr, &Callbacks::access, this, MHD_OPTION_LISTEN_SOCKET, m_socket,
        MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::completed, nullptr, MHD_OPTION_CONNECTION_TIMEOUT,
        idleSeconds, MHD_OPTION_CONNECTION_LIMIT, maxConnections, MHD_OPTION_CONNECTION_MEMORY_LIMIT,
        connectionMemory, MHD_OPTION_END);
    if (m_daemon)
        return;
    close(m_socket);
    throw std::system_error(EAGAIN, std::generic_category(), "cannot start the HTTP server");
}

HttpServer::~HttpServer()
{
    MHD_stop_daemon(m_daemon); // closes the listening socket, too
}

} // namespace companion::simulator
