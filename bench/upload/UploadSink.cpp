// bench_upload_sink ADDRESS: an upload service on port 5505 of an IPv4 address that reads bodies, keeps nothing, and
// answers each with 200. Prints "ready" when it listens; one connection after the other.
#include <arpa/inet.h>
#include <cstdio>
#include <cstdlib>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace {

constexpr int port = 5505;
constexpr std::string_view lengthField = "\r\nContent-Length: ";

/// Reads on until the header section is there; its length, or npos when the client has gone.
std::size_t readHead(int client, std::string& read, std::vector<char>& buffer)
{
    for (;;) {
        const std::size_t end = read.find("\r\n\r\n");
        if (end != std::string::npos)
            return end + 4;
        const ssize_t count = recv(client, buffer.data(), buffer.size(), 0);
        if (count <= 0)
            return std::string::npos;
        read.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

void serve(int client, std::vector<char>& buffer)
{
    std::string read;
    const std::size_t head = readHead(client, read, buffer);
    const std::size_t field = read.find(lengthField);
    if (head == std::string::npos || field == std::string::npos)
        return;
    const std::size_t length = std::strtoul(read.c_str() + field + lengthField.size(), nullptr, 10);
    std::size_t body = read.size() - head;
    while (body < length) {
        const ssize_t count = recv(client, buffer.data(), buffer.size(), 0);
        if (count <= 0)
            return;
        body += static_cast<std::size_t>(count);
    }
    constexpr std::string_view answer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
    send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
}

} // namespace

int main(int argc, char** argv)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (argc != 2 || inet_pton(AF_INET, argv[1], &address.sin_addr) != 1)
        return 2;
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int yes = 1;
    setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0
        || listen(listener, 4) != 0) {
        std::perror("bench_upload_sink");
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    std::vector<char> buffer(1 << 20);
    for (int client = 0; (client = accept(listener, nullptr, nullptr)) >= 0; close(client))
        serve(client, buffer);
    return 1;
}
