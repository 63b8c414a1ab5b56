// How long an upload from memory to a loopback server takes: the HTTP session against a plain client that writes the
// same bytes with send(). Rounds are interleaved; only the ratio travels.
//
// bench_upload [ROUNDS [MEBIBYTES]]

#include "platform/curl/CurlHttpSession.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <future>
#include <netinet/in.h>
#include <string>
#include <string_view>
#include <sys/resource.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace companion;

/// Reads requests, counts their bodies' bytes and answers when all have come.
class Sink {
public:
    explicit Sink(std::size_t bodySize)
        : m_bodySize(bodySize)
        , m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        m_address.sin_family = AF_INET;
        m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof m_address;
        bind(m_listener, reinterpret_cast<const sockaddr*>(&m_address), size);
        listen(m_listener, 4);
        getsockname(m_listener, reinterpret_cast<sockaddr*>(&m_address), &size);
        m_thread = std::thread([this] { run(); });
    }
    ~Sink()
    {
        shutdown(m_listener, SHUT_RDWR);
        m_thread.join();
        close(m_listener);
    }

    const sockaddr_in& address() const { return m_address; }

private:
    void run()
    {
        for (int client = 0; (client = accept(m_listener, nullptr, nullptr)) >= 0; close(client))
            serve(client);
    }

    void serve(int client)
    {
        std::vector<char> buffer(1 << 20);
        std::string head;
        std::size_t read = 0;
        while (read < m_bodySize) {
            const ssize_t count = recv(client, buffer.data(), buffer.size(), 0);
            if (count <= 0)
                return;
            read += static_cast<std::size_t>(count);
            if (head.find("\r\n\r\n") == std::string::npos) {
                head.append(buffer.data(), static_cast<std::size_t>(count));
                const std::size_t end = head.find("\r\n\r\n");
                read = end == std::string::npos ? 0 : head.size() - end - 4;
            }
        }
        constexpr std::string_view answer = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";
        send(client, answer.data(), answer.size(), MSG_NOSIGNAL);
    }

    const std::size_t m_bodySize;
    const int m_listener;
    sockaddr_in m_address{};
    std::thread m_thread;
};

void writeAll(int socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t count = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0)
            std::abort();
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

void uploadPlainly(const Sink& sink, const std::string& file)
{
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    connect(client, reinterpret_cast<const sockaddr*>(&sink.address()), sizeof(sockaddr_in));
    writeAll(client,
        "POST /uploadfile HTTP/1.1\r\nHost: a\r\nContent-Length: " + std::to_string(file.size())
            + "\r\n\r\n");
    writeAll(client, file);
    char answer[256];
    if (recv(client, answer, sizeof answer, 0) <= 0)
        std::abort();
    close(client);
}

void uploadBySession(CurlHttpSession& session, const Sink& sink, std::shared_ptr<const std::string> file)
{
    HttpRequest request;
    request.url = Url{"http://127.0.0.1:" + std::to_string(ntohs(sink.address().sin_port)) + "/uploadfile"};
    request.method = "POST";
    request.body = HttpBody{std::move(file)};
    std::promise<void> done;
    session.send(std::move(request), [&](HttpReply reply) {
        if (!reply.response || reply.response->statusCode != 200)
            std::abort();
        done.set_value();
    });
    done.get_future().wait();
}

double secondsOf(const std::function<void()>& action)
{
    const auto start = std::chrono::steady_clock::now();
    action();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

class NoLog : public SystemLog {
public:
    void log(std::string_view) override { }
};

} // namespace

int main(int argc, char** argv)
{
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 7;
    const std::size_t mebibytes = argc > 2 ? std::strtoul(argv[2], nullptr, 10) : 1'024;
    const auto file = std::make_shared<const std::string>(mebibytes << 20, 'f');
    const Sink sink(file->size());
    NoLog log;
    CurlHttpSession session(log);

    std::vector<double> plain;
    std::vector<double> bySession;
    for (int round = 0; round < rounds; ++round) {
        plain.push_back(secondsOf([&] { uploadPlainly(sink, *file); }));
        bySession.push_back(secondsOf([&] { uploadBySession(session, sink, file); }));
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("%zu MiB: plain %.3f s, session %.3f s, ratio %.2f; peak memory %ld MiB\n", mebibytes,
        median(plain), median(bySession), median(bySession) / median(plain), usage.ru_maxrss / 1024);
    return 0;
}
