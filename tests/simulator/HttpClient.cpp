#include "tests/simulator/HttpClient.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdlib>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace companion::testing {

namespace {

constexpr auto npos = std::string::npos;

/// Splits what has come so far; false while the body is shorter than promised.
bool parse(const std::string& bytes, HttpReply& reply)
{
    const auto headEnd = bytes.find("\r\n\r\n");
    if (headEnd == npos)
        return false;
    reply.head = bytes.substr(0, headEnd + 2);
    reply.body = bytes.substr(headEnd + 4);
    reply.status = std::atoi(reply.head.c_str() + reply.head.find(' '));
    const std::string field = "\r\nContent-Length: ";
    const auto length = reply.head.find(field);
    return length != npos && reply.body.size() >= std::stoul(reply.head.substr(length + field.size()));
}

} // namespace

HttpClient::HttpClient(const std::string& address, std::uint16_t port)
    : m_fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_in server{};
    server.sin_family = AF_INET;
    server.sin_port = htons(port);
    inet_pton(AF_INET, address.c_str(), &server.sin_addr);
    if (connect(m_fd, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0)
        throw std::runtime_error("cannot connect to " + address + ":" + std::to_string(port));
}

HttpClient::~HttpClient()
{
    close(m_fd);
}

bool HttpClient::send(const std::string& bytes)
{
    std::size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_fd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count < 0)
            return false;
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

HttpReply HttpClient::receive(std::chrono::milliseconds time, std::size_t maxBody)
{
    const auto deadline = std::chrono::steady_clock::now() + time;
    HttpReply reply;
    std::string bytes;
    while (!parse(bytes, reply) && reply.body.size() < maxBody) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
        pollfd waiting{m_fd, POLLIN, 0};
        if (left.count() <= 0 || poll(&waiting, 1, static_cast<int>(left.count())) <= 0)
            return reply;
        char buffer[65536];
        const ssize_t count = recv(m_fd, buffer, sizeof buffer, 0);
        reply.isReset = count < 0 && errno == ECONNRESET;
        reply.isClosed = count <= 0;
        if (count <= 0)
            return reply;
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return reply;
}

std::string httpRequest(
    const std::string& method, const std::string& target, const std::string& body, const std::string& fields)
{
    return method + " " + target + " HTTP/1.1\r\nHost: panel\r\n" + fields
        + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

} // namespace companion::testing
