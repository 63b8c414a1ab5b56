// Any bytes in place of a panel's reply, over a real connection: one completion, which has either an error or a whole
// reply whose status the panel has sent.
#include "platform/curl/CurlHttpSession.h"
#include "platform/testing/FakeLog.h"
#include "tests/fuzz/Require.h"

#include <arpa/inet.h>
#include <future>
#include <netinet/in.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

using namespace companion;

namespace {

/// Sends each connection the present bytes. They are set before the request that makes it connect.
class Panel {
public:
    Panel()
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        require(bind(m_listener, any, size) == 0 && listen(m_listener, 16) == 0);
        require(getsockname(m_listener, any, &size) == 0);
        m_url.text = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
        std::thread([this] { serve(); }).detach();
    }

    const Url& url() const { return m_url; }
    void setReply(std::string_view reply) { m_reply = reply; }

private:
    [[noreturn]] void serve() const
    {
        for (;;) {
            const int connection = accept(m_listener, nullptr, nullptr);
            char request[4096];
            recv(connection, request, sizeof request, 0); // a small one: whole
            const std::string reply(m_reply);             // whose bytes are gone once it has arrived
            send(connection, reply.data(), reply.size(), MSG_NOSIGNAL);
            shutdown(connection, SHUT_WR);
            while (recv(connection, request, sizeof request, 0) > 0) { }
            close(connection);
        }
    }

    const int m_listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    Url m_url;
    std::string_view m_reply;
};

class Computer {
public:
    HttpReply reply(const Url& url)
    {
        HttpRequest request;
        request.url = url;
        request.longestDuration = std::chrono::seconds(4);
        std::promise<HttpReply> promise;
        m_session.send(std::move(request), [&](HttpReply reply) { promise.set_value(std::move(reply)); });
        return promise.get_future().get();
    }

private:
    testing::Transcript m_transcript;
    testing::FakeSystemLog m_log{m_transcript};
    CurlHttpSession m_session{m_log};
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size)
{
    static Panel& panel = *new Panel; // its thread needs it to the end
    static Computer& computer = *new Computer;
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    panel.setReply(bytes);
    const HttpReply reply = computer.reply(panel.url());
    require(reply.error.has_value() != reply.data.has_value());
    require(reply.data.has_value() == reply.response.has_value());
    if (!reply.response)
        return 0;
    require(reply.data->size() <= size);
    require(bytes.find(std::to_string(reply.response->statusCode.value())) != std::string_view::npos);
    return 0;
}
