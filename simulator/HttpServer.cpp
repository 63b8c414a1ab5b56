#include "simulator/HttpServer.h"

#include "platform/Text.h"
#include "simulator/Text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace companion::simulator {

namespace {

constexpr unsigned maxConnections = 480; // on each of two ports, below the usual 1024 descriptors
constexpr std::size_t connectionMemory = 128 * 1024;
constexpr std::size_t generatedBlock = 64 * 1024;
constexpr std::size_t maxBody = 1024 * 1024;
constexpr std::size_t maxDrained = 16 * maxBody; // a client that sends more than this gets no answer

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
        1; // ignores lingering connections of an earlier run; another listener still keeps the port
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
    const int own = fcntl(fileno(body.file.get()), F_DUPFD_CLOEXEC, 0);
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

/// The library closes connections gracefully. Connecting to no address dissolves a TCP connection at once, with a
/// reset (connect(2)).
void resetNow(const Request& request)
{
    const sockaddr nowhere{AF_UNSPEC, {}};
    static_cast<void>(connect(request.socket(), &nowhere, sizeof nowhere));
}

MHD_Result conclude(const Request& request, const std::optional<Outcome>& outcome)
{
    if (!outcome)
        return MHD_YES;
    if (const auto* answer = std::get_if<Answer>(&*outcome))
        return sendAnswer(request.connection(), *answer);
    if (std::holds_alternative<ResetConnection>(*outcome))
        resetNow(request);
    return MHD_NO;
}

Answer tooLarge()
{
    return lineAnswer(413, "the body is limited to " + std::to_string(maxBody) + " bytes");
}

class CollectingExchange : public Exchange {
public:
    CollectingExchange(const Request& request, Handler handler)
        : m_request(request)
        , m_handler(std::move(handler))
    {
    }

    std::optional<Outcome> headArrived() override
    {
        const auto length = m_request.header("Content-Length");
        return length && !parseCount(*length, maxBody) ? std::optional<Outcome>(tooLarge()) : std::nullopt;
    }

    std::optional<Outcome> bodyArrived(std::string_view data) override
    {
        m_size += data.size();
        if (m_size <= maxBody)
            m_body.append(data);
        return m_size > maxDrained ? std::optional<Outcome>(HangUp()) : std::nullopt;
    }

    Outcome requestComplete() override
    {
        return m_size > maxBody ? tooLarge() : m_handler(m_request, m_body);
    }

private:
    const Request& m_request;
    const Handler m_handler;
    std::string m_body;
    std::size_t m_size = 0; ///< may exceed what is kept in `m_body`
};

struct Call {
    Request request;
    std::unique_ptr<Exchange> exchange{};
};

} // namespace

Request::Request(MHD_Connection* connection, std::string method, std::string path)
    : m_connection(connection)
    , m_method(std::move(method))
    , m_path(std::move(path))
    , m_peer(peerOf(connection))
{
}

int Request::socket() const
{
    return MHD_get_connection_info(m_connection, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
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

bool Request::wait(std::chrono::milliseconds time) const
{
    // A wait is not idleness: setting the time-out again after it restarts the library's count.
    const unsigned idleSeconds =
        MHD_get_connection_info(m_connection, MHD_CONNECTION_INFO_CONNECTION_TIMEOUT)->connection_timeout;
    MHD_set_connection_option(m_connection, MHD_CONNECTION_OPTION_TIMEOUT, 0U);
    pollfd client{socket(), POLLRDHUP, 0};
    const int events = poll(&client, 1, static_cast<int>(time.count()));
    MHD_set_connection_option(m_connection, MHD_CONNECTION_OPTION_TIMEOUT, idleSeconds);
    return events == 0;
}

Answer lineAnswer(unsigned status, const std::string& line)
{
    return {status, line + "\n"};
}

Answer unknownPath(const Request& request)
{
    return lineAnswer(404, "there is no " + printable(request.path()));
}

Answer wrongMethod(const std::string& allowed)
{
    Answer answer = lineAnswer(405, "only " + allowed + " works here");
    answer.fields.push_back({"Allow", allowed});
    return answer;
}

std::unique_ptr<Exchange> collectBody(const Request& request, Handler handler)
{
    return std::make_unique<CollectingExchange>(request, std::move(handler));
}

/// No exception may pass through the library, which is written in C: an exception ends its connection.
struct HttpServer::Callbacks {
    static MHD_Result access(void* server, MHD_Connection* connection, const char* url, const char* method,
        const char*, const char* data, std::size_t* size, void** context)
    try {
        auto* call = static_cast<Call*>(*context);
        if (!call) {
            *context = call = new Call{Request(connection, method, url)};
            call->exchange = static_cast<HttpServer*>(server)->m_open(call->request);
            return conclude(call->request, call->exchange->headArrived());
        }
        const std::size_t arrived = std::exchange(*size, 0);
        return conclude(call->request,
            arrived > 0 ? call->exchange->bodyArrived({data, arrived}) : call->exchange->requestComplete());
    } catch (const std::exception&) {
        return MHD_NO;
    }

    static void completed(void*, MHD_Connection*, void** context, MHD_RequestTerminationCode)
    {
        delete static_cast<Call*>(std::exchange(*context, nullptr));
    }
};

HttpServer::HttpServer(
    const std::string& address, std::uint16_t port, OpenExchange open, std::chrono::seconds idleTimeout)
    : m_open(std::move(open))
    , m_socket(openListener(address, port))
    , m_port(portOf(m_socket))
{
    m_daemon =
        MHD_start_daemon(MHD_USE_THREAD_PER_CONNECTION | MHD_USE_INTERNAL_POLLING_THREAD | MHD_USE_POLL, 0,
            nullptr, nullptr, &Callbacks::access, this, MHD_OPTION_LISTEN_SOCKET, m_socket,
            MHD_OPTION_NOTIFY_COMPLETED, &Callbacks::completed, nullptr, MHD_OPTION_CONNECTION_TIMEOUT,
            static_cast<unsigned>(idleTimeout.count()), MHD_OPTION_CONNECTION_LIMIT, maxConnections,
            MHD_OPTION_CONNECTION_MEMORY_LIMIT, connectionMemory, MHD_OPTION_END);
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
