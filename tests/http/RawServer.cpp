#include "tests/http/RawServer.h"

#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

std::size_t contentLengthOf(const std::string& head)
{
    const std::string name = "\r\nContent-Length: ";
    const std::size_t at = head.find(name);
    return at == std::string::npos ? 0 : std::stoul(head.substr(at + name.size()));
}

} // namespace

std::string RawConnection::readRequest()
{
    std::string request = readHead();
    const std::size_t end = request.find("\r\n\r\n");
    if (end == std::string::npos)
        return request;
    const std::size_t total = end + 4 + contentLengthOf(request.substr(0, end));
    while (request.size() < total && readSome(request, 10s)) { }
    return request;
}

std::string RawConnection::readHead()
{
    std::string head;
    while (head.find("\r\n\r\n") == std::string::npos && readSome(head, 10s)) { }
    return head;
}

std::string RawConnection::readRest(std::chrono::milliseconds silence)
{
    std::string rest;
    while (readSome(rest, silence)) { }
    return rest;
}

std::string RawConnection::readOnce()
{
    std::string bytes;
    readSome(bytes, 10s);
    return bytes;
}

bool RawConnection::readByte()
{
    pollfd waiting{m_socket, POLLIN, 0};
    char byte = 0;
    return poll(&waiting, 1, 10'000) > 0 && recv(m_socket, &byte, 1, 0) == 1;
}

bool RawConnection::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool RawConnection::waitForClose(std::chrono::milliseconds timeout)
{
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{m_socket, POLLIN, 0};
        if (left <= 0ms || poll(&waiting, 1, static_cast<int>(left.count())) <= 0)
            return false;
        char buffer[65536];
        if (recv(m_socket, buffer, sizeof buffer, 0) <= 0)
            return true;
    }
}

void RawConnection::finishWriting()
{
    shutdown(m_socket, SHUT_WR);
}

void RawConnection::reset()
{
    const linger atOnce{1, 0};
    setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

bool RawConnection::readSome(std::string& into, std::chrono::milliseconds timeout)
{
    pollfd waiting{m_socket, POLLIN, 0};
    if (poll(&waiting, 1, static_cast<int>(timeout.count())) <= 0)
        return false;
    char buffer[65536];
    const ssize_t count = recv(m_socket, buffer, sizeof buffer, 0);
    if (count <= 0)
        return false;
    into.append(buffer, static_cast<std::size_t>(count));
    return true;
}

RawServer::RawServer(Handler handler, int receiveBuffer)
    : m_handler(std::move(handler))
    , m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    if (receiveBuffer > 0)
        setsockopt(m_listener, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (bind(m_listener, reinterpret_cast<const sockaddr*>(&address), size) != 0
        || listen(m_listener, 64) != 0
        || getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no listening socket");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptConnections(); });
}

RawServer::~RawServer()
{
    m_isStopping = true;
    shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    close(m_listener);
    {
        const std::lock_guard lock(m_mutex);
        for (const int socket : m_sockets)
            shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& thread : m_threads)
        thread.join();
}

std::string RawServer::url(const std::string& path) const
{
    return "http://127.0.0.1:" + std::to_string(m_port) + path;
}

void RawServer::acceptConnections()
{
    while (!m_isStopping) {
        const int socket = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0)
            continue;
        ++m_connections;
        const std::lock_guard lock(m_mutex);
        m_sockets.push_back(socket);
        m_threads.emplace_back([this, socket] { serve(socket); });
    }
}

void RawServer::serve(int socket)
{
    RawConnection connection(socket);
    m_handler(connection);
    const std::lock_guard lock(m_mutex);
    m_sockets.remove(socket);
    close(socket);
}

} // namespace companion::testing
