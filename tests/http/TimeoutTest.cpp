#include "tests/http/CurlHttpSessionTest.h"

#include <atomic>
#include <csignal>
#include <future>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

namespace {

/// A server in a process of its own that can be stopped: then its kernel takes what fits into a buffer, and no more.
/// To be made before the process has threads.
class StoppableServer {
public:
    StoppableServer()
    {
        const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        int told[2];
        if (bind(listener, reinterpret_cast<const sockaddr*>(&address), size) != 0 || listen(listener, 1) != 0
            || getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size) != 0 || pipe(told) != 0)
            throw std::runtime_error("no listening socket");
        m_port = ntohs(address.sin_port);
        m_process = fork();
        if (m_process == 0)
            serve(listener, told[1]);
        close(listener);
        close(told[1]);
        m_told = told[0];
    }
    ~StoppableServer()
    {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
        close(m_told);
    }
    StoppableServer(const StoppableServer&) = delete;
    StoppableServer& operator=(const StoppableServer&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port) + "/"; }

    /// Stops the process once it has read the first megabyte.
    void stopInMidUpload() const
    {
        char byte = 0;
        EXPECT_EQ(read(m_told, &byte, 1), 1);
        kill(m_process, SIGSTOP);
    }

private:
    [[noreturn]] static void serve(int listener, int tell)
    {
        const int client = accept(listener, nullptr, nullptr);
        static char buffer[65536];
        bool hasTold = false;
        std::size_t total = 0;
        for (ssize_t count = 0; (count = recv(client, buffer, sizeof buffer, 0)) > 0;) {
            total += static_cast<std::size_t>(count);
            if (total > 1'000'000 && !std::exchange(hasTold, true) && write(tell, "x", 1) != 1)
                break;
        }
        _exit(0);
    }

    std::uint16_t m_port = 0;
    int m_told = -1;
    pid_t m_process = -1;
};

} // namespace

using TimeoutTest = CurlHttpSessionTest;

TEST_F(TimeoutTest, ServerThatIsStoppedInMidUploadTimesOut)
{
    const StoppableServer server;
    auto stopping = std::async(std::launch::async, [&] { server.stopInMidUpload(); });
    HttpRequest request = uploadTo(server.url(), 64 << 20);
    request.timeout = 700ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    const auto duration = SteadyClock::now() - start;
    EXPECT_GE(duration, 700ms);
    EXPECT_LT(duration, 4s);
}

TEST_F(TimeoutTest, ServerThatTakesTheWholeBodyAndNeverAnswersTimesOut)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.waitForClose();
    });
    HttpRequest request = uploadTo(server.url(), 1 << 20);
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    EXPECT_LT(SteadyClock::now() - start, 2s);
}

TEST_F(TimeoutTest, ServerThatAcceptsAndNeverAnswersTimesOut)
{
    RawServer server([](RawConnection& connection) { connection.waitForClose(); });
    HttpRequest request = requestTo(server.url());
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    const HttpReply answer = reply(request);
    const auto duration = SteadyClock::now() - start;
    expectError(answer);
    EXPECT_EQ(answer.error, "The request timed out");
    EXPECT_GE(duration, 290ms); // the system's own clock of the connection ticks every 4 ms
    EXPECT_LT(duration, 1'500ms);
}

TEST_F(TimeoutTest, ConnectionThatIsNeverAcceptedTimesOut)
{
    // A listener whose queue is full does not answer further connections.
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), size), 0);
    ASSERT_EQ(listen(listener, 0), 0);
    getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    std::vector<int> fillers;
    for (int i = 0; i < 4; ++i) {
        fillers.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
        connect(fillers.back(), reinterpret_cast<const sockaddr*>(&address), size);
    }
    HttpRequest request = requestTo("http://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/");
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    EXPECT_LT(SteadyClock::now() - start, 1'500ms);
    for (const int filler : fillers)
        close(filler);
    close(listener);
}

TEST_F(TimeoutTest, DrippingReplyOutlivesTheTimeoutFourTimes)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        for (const char c : std::string("HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\nabc")) {
            connection.write(std::string(1, c));
            std::this_thread::sleep_for(40ms);
        }
    });
    HttpRequest request = requestTo(server.url());
    request.timeout = 400ms;
    const auto start = SteadyClock::now();
    expectReply(reply(request), 200, "abc");
    EXPECT_GT(SteadyClock::now() - start, 1'500ms);
}

TEST_F(TimeoutTest, DrippingReplyEndsAfterTheLongestDuration)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 300\r\n\r\n");
        for (int i = 0; i < 100; ++i) {
            connection.write("x");
            std::this_thread::sleep_for(40ms);
        }
    });
    HttpRequest request = requestTo(server.url());
    request.timeout = 400ms;
    request.longestDuration = 900ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    const auto duration = SteadyClock::now() - start;
    EXPECT_GE(duration, 890ms); // libcurl counts whole milliseconds
    EXPECT_LT(duration, 2s);
}

TEST_F(TimeoutTest, DripThatStopsTimesOut)
{
    std::atomic<SteadyClock::time_point> lastByte;
    RawServer server([&](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 30\r\n\r\n");
        std::this_thread::sleep_for(50ms);
        connection.write("x");
        lastByte = SteadyClock::now();
        connection.waitForClose();
    });
    HttpRequest request = requestTo(server.url());
    request.timeout = 600ms;
    EXPECT_EQ(reply(request).error, "The request timed out");
    const auto idle = SteadyClock::now() - lastByte.load();
    EXPECT_GE(idle, 580ms);
    EXPECT_LT(idle, 1s); // not another whole one from when it was noticed
}

TEST_F(TimeoutTest, ServerThatReadsSlowlyOutlivesTheTimeout)
{
    // Each time far less is read than the sender's buffer needs to become writable again.
    const auto readSlowly = [](RawConnection& connection) {
        for (int i = 0; i < 30; ++i) {
            std::this_thread::sleep_for(50ms);
            connection.readOnce();
        }
        connection.readRest(300ms);
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    };
    RawServer server(readSlowly, /*receiveBuffer=*/64 << 10);
    HttpRequest request = uploadTo(server.url());
    request.timeout = 500ms;
    expectReply(reply(request), 200, "");
}

TEST_F(TimeoutTest, ReplyToAnUnreadUploadCountsWhenTheServerStopsReading)
{
    std::promise<void> end;
    const std::shared_future<void> isOver = end.get_future().share();
    RawServer server([isOver](RawConnection& connection) {
        connection.readHead();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nfine");
        isOver.wait_for(20s);
    });
    HttpRequest request = uploadTo(server.url());
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    expectReply(reply(request), 200, "fine");
    EXPECT_LT(SteadyClock::now() - start, 3s);
    end.set_value();
}

TEST_F(TimeoutTest, RefusedPortAndConnectionClosedAtOnceAreErrors)
{
    std::string url;
    {
        RawServer server([](RawConnection&) {});
        expectError(reply(requestTo(server.url())));
        url = server.url();
    }
    expectError(reply(requestTo(url)));
}

} // namespace companion::testing
