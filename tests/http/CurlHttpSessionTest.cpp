#include "platform/curl/CurlHttpSession.h"

#include "platform/curl/ReplyCollector.h"
#include "platform/testing/FakeLog.h"
#include "tests/http/RawServer.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <future>
#include <gmock/gmock.h>
#include <mutex>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;
using ::testing::HasSubstr;

namespace {

HttpBody bodyOf(const std::vector<std::string>& pieces)
{
    HttpBody body;
    for (const std::string& piece : pieces)
        body.push_back(sharedBytes(piece));
    return body;
}

/// Answers each connection with the same bytes, once it has read the whole request.
RawServer::Handler answering(std::string reply)
{
    return [reply = std::move(reply)](RawConnection& connection) {
        connection.readRequest();
        connection.write(reply);
    };
}

/// Moves this thread, and those that it starts, into a network of its own, as long as it lives.
class NetworkOfItsOwn {
public:
    NetworkOfItsOwn()
        : m_before(open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC))
        , m_isThere(m_before >= 0 && unshare(CLONE_NEWNET) == 0)
    {
        if (m_isThere)
            setUp(true);
    }
    ~NetworkOfItsOwn()
    {
        if (m_isThere && setns(m_before, CLONE_NEWNET) != 0)
            std::abort();
        close(m_before);
    }
    NetworkOfItsOwn(const NetworkOfItsOwn&) = delete;
    NetworkOfItsOwn& operator=(const NetworkOfItsOwn&) = delete;

    /// False where that takes rights which this user has not.
    bool isThere() const { return m_isThere; }

    static void setUp(bool isUp)
    {
        const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        ifreq request{};
        std::strcpy(request.ifr_name, "lo");
        request.ifr_flags = isUp ? IFF_UP : 0;
        EXPECT_EQ(ioctl(fd, SIOCSIFFLAGS, &request), 0);
        close(fd);
    }

private:
    const int m_before;
    const bool m_isThere;
};

} // namespace

class CurlHttpSessionTest : public ::testing::Test {
protected:
    HttpRequest requestTo(const std::string& url)
    {
        HttpRequest request;
        request.url = Url{url};
        request.timeout = 5s;
        return request;
    }

    /// Sends and waits for the one completion.
    HttpReply reply(HttpRequest request)
    {
        auto promise = std::make_shared<std::promise<HttpReply>>();
        auto future = promise->get_future();
        m_session->send(
            std::move(request), [promise](HttpReply answer) { promise->set_value(std::move(answer)); });
        if (future.wait_for(20s) != std::future_status::ready)
            return {std::nullopt, std::nullopt, "NEVER COMPLETED"};
        return future.get();
    }

    HttpReply replyTo(const std::string& answer)
    {
        RawServer server(answering(answer));
        return reply(requestTo(server.url()));
    }

    void expectError(const HttpReply& answer)
    {
        EXPECT_TRUE(answer.error.has_value());
        EXPECT_NE(answer.error, "NEVER COMPLETED");
        EXPECT_FALSE(answer.data.has_value());
        EXPECT_FALSE(answer.response.has_value());
    }

    void expectReply(const HttpReply& answer, int status, const std::string& data)
    {
        EXPECT_EQ(answer.error, std::nullopt);
        ASSERT_TRUE(answer.response.has_value());
        EXPECT_EQ(answer.response->statusCode, status);
        EXPECT_EQ(answer.data, data);
    }

    /// What the server gets to see of a request, "PORT" standing for its own.
    std::string wireBytes(HttpRequest request)
    {
        std::promise<std::string> promise;
        auto future = promise.get_future();
        RawServer server([&](RawConnection& connection) {
            std::string bytes = connection.readRequest();
            bytes += connection.readRest(50ms);
            promise.set_value(bytes);
            connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        });
        request.url = Url{server.url(request.url.text)};
        expectReply(reply(std::move(request)), 200, "");
        std::string bytes = future.get();
        const std::string port = std::to_string(server.port());
        return bytes.replace(bytes.find(port), port.size(), "PORT");
    }

    Transcript m_transcript;
    FakeSystemLog m_log{m_transcript};
    std::unique_ptr<CurlHttpSession> m_session = std::make_unique<CurlHttpSession>(m_log);
};

// What goes out.

TEST_F(CurlHttpSessionTest, AGetIsTheRequestLineHostAndTheFieldsInTheirOrder)
{
    HttpRequest request = requestTo("/pingServerWithIP?ip=192.168.1.5&msg=ping");
    request.headers = {
        {"Content-Type", "application/json; charset=utf-8"}, {"Accept", "application/json; charset=utf-8"}};
    EXPECT_EQ(wireBytes(request),
        "GET /pingServerWithIP?ip=192.168.1.5&msg=ping HTTP/1.1\r\n"
        "Host: 127.0.0.1:PORT\r\n"
        "Content-Type: application/json; charset=utf-8\r\n"
        "Accept: application/json; charset=utf-8\r\n"
        "\r\n");
}

TEST_F(CurlHttpSessionTest, APostCarriesItsPiecesAsOneBody)
{
    HttpRequest request = requestTo("/ws");
    request.method = "POST";
    request.headers = {{"Accept", "text/plain"}};
    request.body = bodyOf({"{\"key\":", "", "\"ACTION_CAST\"", "}"});
    EXPECT_EQ(wireBytes(request),
        "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nAccept: text/plain\r\nContent-Length: 21\r\n\r\n"
        "{\"key\":\"ACTION_CAST\"}");
}

TEST_F(CurlHttpSessionTest, AContentLengthOf3OnABodyOf200BytesIsReplacedInItsPlaceAndAll200Arrive)
{
    HttpRequest request = requestTo("/uploadfile");
    request.method = "POST";
    request.headers = {{"Content-Type", "multipart/form-data; boundary=B"}, {"content-length", "3"},
        {"srcfilename", "K\xC3\xA4se \"1\".png"}, {"filetype", "image/png"}};
    const std::string body(200, 'x');
    request.body = bodyOf({body});
    EXPECT_EQ(wireBytes(request),
        "POST /uploadfile HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\n"
        "Content-Type: multipart/form-data; boundary=B\r\nContent-Length: 200\r\n"
        "srcfilename: K\xC3\xA4se \"1\".png\r\nfiletype: image/png\r\n\r\n"
            + body);
}

TEST_F(CurlHttpSessionTest, RepeatedEmptyAndPaddedFieldsGoOutAsTheyAre)
{
    HttpRequest request = requestTo("/");
    request.headers = {{"X-A", "1"}, {"X-B", ""}, {"X-A", "2"}, {"X-C", " \t"}, {"X-D", "a;b: c"}};
    EXPECT_THAT(wireBytes(request), HasSubstr("\r\nX-A: 1\r\nX-B:\r\nX-A: 2\r\nX-C:\r\nX-D: a;b: c\r\n\r\n"));
}

TEST_F(CurlHttpSessionTest, APostWithoutABodyHasTheLength0)
{
    HttpRequest request = requestTo("/ws");
    request.method = "POST";
    EXPECT_EQ(wireBytes(request), "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nContent-Length: 0\r\n\r\n");
    request.body = HttpBody();
    EXPECT_EQ(wireBytes(request), "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, AGetWithoutABodyTellsNoLengthEvenWhenGivenOne)
{
    HttpRequest request = requestTo("/");
    request.headers = {{"Content-Length", "3"}, {"Transfer-Encoding", "chunked"}, {"Expect", "100-continue"}};
    EXPECT_EQ(wireBytes(request), "GET / HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, OtherMethodsAndDotSegmentsGoOutAsTheyAre)
{
    HttpRequest request = requestTo("/a/../b?c=%41");
    request.method = "DELETE";
    EXPECT_THAT(wireBytes(request), ::testing::StartsWith("DELETE /a/../b?c=%41 HTTP/1.1\r\n"));
}

TEST_F(CurlHttpSessionTest, AnUploadOf3MebibytesIsNotHeldBackByExpectAndReportsItsProgress)
{
    HttpRequest request = requestTo("/uploadfile");
    request.method = "POST";
    request.body = bodyOf({"head", std::string(3 << 20, 'f'), "tail"});
    const std::uint64_t size = (3 << 20) + 8;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
    std::thread::id thread;
    request.progress = [&](std::uint64_t sent, std::uint64_t total) {
        progress.emplace_back(sent, total);
        thread = std::this_thread::get_id();
    };
    const std::string bytes = wireBytes(request);
    EXPECT_THAT(bytes, ::testing::Not(HasSubstr("Expect")));
    EXPECT_TRUE(bytes.ends_with("ftail"));
    EXPECT_EQ(bytes.size() - bytes.find("\r\n\r\n") - 4, size);
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), std::pair(size, size));
    EXPECT_NE(thread, std::this_thread::get_id());
}

TEST_F(CurlHttpSessionTest, AFieldValueWithALineBreakOrNulSendsNothingAndLogsOneLine)
{
    RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    for (const std::string value : {"a\r\nX-Evil: 1", "a\nb", "a\rb", "a"}) {
        HttpRequest request = requestTo(server.url());
        request.headers = {{"srcfilename", value + std::string(value == "a" ? 1 : 0, '\0')}};
        expectError(reply(request));
        EXPECT_EQ(m_transcript.take(),
            "log HTTP request not sent: the header field \"srcfilename\" holds a line break or a NUL");
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpSessionTest, AMethodFieldNameOrUrlThatIsNoneSendsNothing)
{
    RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    HttpRequest request = requestTo(server.url());
    request.method = "GET / HTTP/1.1\r\nX:";
    expectError(reply(request));
    request = requestTo(server.url());
    request.headers = {{"X-A: 1\r\nX-B", "2"}};
    expectError(reply(request));
    expectError(reply(requestTo(server.url("/a b"))));
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpSessionTest, ProxiesOfTheEnvironmentAreNotAsked)
{
    RawServer proxy(answering("HTTP/1.1 502 Proxy\r\nContent-Length: 0\r\n\r\n"));
    RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"));
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"})
        setenv(name, proxy.url("").c_str(), 1);
    expectReply(reply(requestTo(server.url())), 200, "ok");
    for (const char* name : {"http_proxy", "all_proxy", "ALL_PROXY"})
        unsetenv(name);
    EXPECT_EQ(proxy.connections(), 0);
}

TEST_F(CurlHttpSessionTest, EveryRequestHasAConnectionOfItsOwnThatIsClosedWithItsReply)
{
    std::atomic<int> closed = 0;
    RawServer server([&](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        closed += connection.waitForClose() ? 1 : 0;
    });
    for (int i = 0; i < 3; ++i)
        expectReply(reply(requestTo(server.url())), 200, "");
    EXPECT_EQ(server.connections(), 3);
    for (const auto end = SteadyClock::now() + 5s; closed < 3 && SteadyClock::now() < end;)
        std::this_thread::sleep_for(1ms);
    EXPECT_EQ(closed, 3);
}

// What comes back.

TEST_F(CurlHttpSessionTest, StatusFieldsAndDataOfAReplyArrive)
{
    const HttpReply answer = replyTo("HTTP/1.1 200 OK\r\nContent-Type: text/plain\r\nX-A:1\r\nx-a:  2 "
                                     "\r\nContent-Length: 8\r\n\r\nCAST_OFF");
    expectReply(answer, 200, "CAST_OFF");
    const std::vector<HttpHeader> headers{
        {"Content-Type", "text/plain"}, {"X-A", "1"}, {"x-a", "2"}, {"Content-Length", "8"}};
    EXPECT_EQ(answer.response->headers, headers);
}

TEST_F(CurlHttpSessionTest, RepliesWithoutABodyHaveEmptyData)
{
    expectReply(replyTo("HTTP/1.1 204 No Content\r\n\r\n"), 204, "");
    expectReply(replyTo("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"), 200, "");
    expectReply(replyTo("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n"), 200, "");
    expectReply(replyTo("HTTP/1.1 200 OK\r\n\r\n"), 200, "");
}

TEST_F(CurlHttpSessionTest, ErrorStatusesAreReplies)
{
    expectReply(replyTo("HTTP/1.1 500 Broken\r\nContent-Length: 4\r\n\r\noops"), 500, "oops");
    expectReply(replyTo("HTTP/1.1 401 No\r\nWWW-Authenticate: Basic\r\nContent-Length: 0\r\n\r\n"), 401, "");
}

TEST_F(CurlHttpSessionTest, ARedirectIsAReplyAndNotFollowed)
{
    RawServer target(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    expectReply(
        replyTo("HTTP/1.1 302 Found\r\nLocation: " + target.url() + "\r\nContent-Length: 3\r\n\r\nhop"), 302,
        "hop");
    EXPECT_EQ(target.connections(), 0);
}

TEST_F(CurlHttpSessionTest, InterimResponsesAreForgotten)
{
    const HttpReply answer =
        replyTo("HTTP/1.1 100 Continue\r\nX-Old: 1\r\n\r\nHTTP/1.1 103 Early Hints\r\n\r\n"
                "HTTP/1.1 200 OK\r\nX-New: 1\r\nContent-Length: 2\r\n\r\nok");
    expectReply(answer, 200, "ok");
    EXPECT_EQ(answer.response->headers.front(), (HttpHeader{"X-New", "1"}));
}

TEST_F(CurlHttpSessionTest, AChunkedReplyIsPutTogetherAndItsTrailersLeftOut)
{
    const HttpReply answer = replyTo("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n"
                                     "3\r\nabc\r\n2;x=y\r\nde\r\n0\r\nX-Trailer: 1\r\n\r\n");
    expectReply(answer, 200, "abcde");
    EXPECT_EQ(answer.response->headers.size(), 1u);
}

TEST_F(CurlHttpSessionTest, TheEndOfAReplyMayBeTheConnectionsEnd)
{
    expectReply(replyTo("HTTP/1.0 200 OK\r\n\r\nall of it"), 200, "all of it");
}

TEST_F(CurlHttpSessionTest, AReplyThatIsCutOffIsAnError)
{
    expectError(replyTo("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\nhalf"));
    expectError(replyTo("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabcde\r\n"));
    expectError(replyTo("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nab"));
    expectError(replyTo("HTTP/1.1 200 OK\r\nContent-Le"));
    expectError(replyTo("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n"));
    expectError(replyTo("HTTP/1.1 100 Continue\r\n\r\n"));
    expectError(replyTo("HTTP/1.1 2"));
    expectError(replyTo(""));
}

TEST_F(CurlHttpSessionTest, WhatIsNotHttpIsAnError)
{
    expectError(replyTo("just some text, as HTTP/0.9 would have it\n"));
    expectError(replyTo("SSH-2.0-OpenSSH_9.2\r\n"));
    expectError(replyTo(std::string(100'000, '\0')));
    expectError(replyTo("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nzz\r\nabc"));
}

TEST_F(CurlHttpSessionTest, AReplyOf16MebibytesIsTakenAndOneByteMoreIsAnError)
{
    const std::size_t limit = ReplyCollector::maximumBody;
    const std::string body(limit, 'x');
    const std::string head = "HTTP/1.1 200 OK\r\nContent-Length: ";
    const HttpReply whole = replyTo(head + std::to_string(limit) + "\r\n\r\n" + body);
    EXPECT_EQ(whole.error, std::nullopt);
    EXPECT_EQ(whole.data.value_or("").size(), limit);
    const HttpReply tooLong = replyTo("HTTP/1.0 200 OK\r\n\r\n" + body + "y");
    expectError(tooLong);
    EXPECT_EQ(tooLong.error, "The reply is too long");
}

TEST_F(CurlHttpSessionTest, AReplyThatAnnouncesTooMuchIsRefusedAtItsFirstByte)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 16777217\r\n\r\nx");
        EXPECT_TRUE(connection.waitForClose(2s));
    });
    EXPECT_EQ(reply(requestTo(server.url())).error, "The reply is too long");
}

TEST_F(CurlHttpSessionTest, AnEndlessBodyAndEndlessHeadersEndInAnError)
{
    RawServer body([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
        while (connection.write(std::string(65'536, 'x'))) { }
    });
    EXPECT_EQ(reply(requestTo(body.url())).error, "The reply is too long");
    RawServer headers([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\n");
        while (connection.write("X-More: " + std::string(1'000, 'x') + "\r\n")) { }
    });
    EXPECT_EQ(reply(requestTo(headers.url())).error, "The reply's header fields are too long");
}

TEST_F(CurlHttpSessionTest, A101IsTheReplyAtOnceThoughTheConnectionStaysOpen)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write(
            "HTTP/1.1 101 Switching Protocols\r\nUpgrade: x\r\nConnection: Upgrade\r\n\r\nnot HTTP");
        EXPECT_TRUE(connection.waitForClose());
    });
    const auto start = SteadyClock::now();
    expectReply(reply(requestTo(server.url())), 101, "");
    EXPECT_LT(SteadyClock::now() - start, 2s);
    expectReply(replyTo("HTTP/1.1 101 Switching Protocols\r\n\r\n"), 101, "");
}

TEST_F(CurlHttpSessionTest, OfAnswersInChunksThatComeBeforeTheBodyIsSentErrorsAreReplies)
{
    for (const int status : {200, 413}) {
        RawServer server([status](RawConnection& connection) {
            connection.readHead();
            connection.write("HTTP/1.1 " + std::to_string(status)
                + " Any\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nfull\r\n0\r\n\r\n");
            std::this_thread::sleep_for(50ms);
            connection.reset();
        });
        HttpRequest request = requestTo(server.url());
        request.method = "POST";
        request.body = bodyOf({std::string(24 << 20, 'f')});
        const HttpReply answer = reply(request);
        if (status == 413)
            expectReply(answer, 413, "full");
        else
            expectError(answer); // it may have been cut off
    }
}

TEST_F(CurlHttpSessionTest, A413ThatComesBeforeTheBodyIsSentIsTheReply)
{
    for (const std::string fields : {"", "Connection: close\r\n"}) {
        for (const bool resets : {false, true}) {
            RawServer server([&](RawConnection& connection) {
                connection.readHead();
                connection.write("HTTP/1.1 413 Too Large\r\n" + fields + "Content-Length: 4\r\n\r\nfull");
                std::this_thread::sleep_for(50ms);
                if (resets)
                    connection.reset();
            });
            HttpRequest request = requestTo(server.url());
            request.method = "POST";
            request.body = bodyOf({std::string(24 << 20, 'f')});
            expectReply(reply(request), 413, "full");
        }
    }
}

TEST_F(CurlHttpSessionTest, AnAnswerThatComesBeforeTheServerStopsReadingIsTheReply)
{
    RawServer server([](RawConnection& connection) {
        connection.readHead();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nfine");
        std::this_thread::sleep_for(50ms);
        connection.reset();
    });
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    expectReply(reply(request), 200, "fine");
}

// Time, and its lack.

TEST_F(CurlHttpSessionTest, AServerThatNeverAnswersTimesOutAfterTheIdleTime)
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

TEST_F(CurlHttpSessionTest, AConnectionThatIsNotTakenUpTimesOutToo)
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

TEST_F(CurlHttpSessionTest, AServerThatDripsHeaderAndBodyBytesOutlivesTheIdleTimeFourTimes)
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

TEST_F(CurlHttpSessionTest, ADripIsOverAfterTheLongestDurationIfThereIsOne)
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
    EXPECT_GE(duration, 900ms);
    EXPECT_LT(duration, 2s);
}

TEST_F(CurlHttpSessionTest, ADripThatStopsTimesOutOneIdleTimeLater)
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

TEST_F(CurlHttpSessionTest, AServerThatReadsSlowlyOutlivesTheIdleTime)
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
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    request.timeout = 500ms;
    expectReply(reply(request), 200, "");
}

TEST_F(CurlHttpSessionTest, AServerThatReads60BytesInAnIdleTimeIsWaitedForHoweverLongItTakes)
{
    // As one that reads a byte a second is to an idle time of a minute. The smallest buffer that there is opens its
    // window again once 1,152 bytes have been read, which is every 19 idle times.
    constexpr auto idleTime = 100ms;
    constexpr int idleTimes = 50;
    const auto readSlowly = [=](RawConnection& connection) {
        const auto start = SteadyClock::now();
        for (int count = 1; count <= 60 * idleTimes && connection.readByte(); ++count)
            std::this_thread::sleep_until(start + count * idleTime / 60);
        connection.write("HTTP/1.1 413 Enough\r\nContent-Length: 0\r\n\r\n");
    };
    RawServer server(readSlowly, /*receiveBuffer=*/1);
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    request.timeout = idleTime;
    const auto start = SteadyClock::now();
    expectReply(reply(request), 413, "");
    EXPECT_GE(SteadyClock::now() - start, idleTimes * idleTime);
}

TEST_F(CurlHttpSessionTest, AServerThatStopsReadingIsGivenUpAfter30IdleTimes)
{
    std::promise<void> end;
    const std::shared_future<void> isOver = end.get_future().share();
    RawServer server([isOver](RawConnection& connection) {
        connection.readHead();
        isOver.wait_for(20s);
    });
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    request.timeout = 100ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    const auto duration = SteadyClock::now() - start;
    EXPECT_GE(duration, 2'900ms);
    EXPECT_LT(duration, 5s);
    end.set_value();
}

TEST_F(CurlHttpSessionTest, AServerThatStopsReadingOnceItHasAnsweredIsWaitedForNoLongerThanOthers)
{
    std::promise<void> end;
    const std::shared_future<void> isOver = end.get_future().share();
    RawServer server([isOver](RawConnection& connection) {
        connection.readHead();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 4\r\n\r\nfine");
        isOver.wait_for(20s);
    });
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    expectReply(reply(request), 200, "fine");
    EXPECT_LT(SteadyClock::now() - start, 3s);
    end.set_value();
}

TEST_F(CurlHttpSessionTest, AServerThatStopsReadingAndThenVanishesIsNotWaitedForThatLong)
{
    const NetworkOfItsOwn network;
    if (!network.isThere())
        GTEST_SKIP() << "no network namespace";
    m_session = std::make_unique<CurlHttpSession>(m_log);
    std::promise<void> end;
    const std::shared_future<void> isOver = end.get_future().share();
    RawServer server([isOver](RawConnection& connection) {
        connection.readHead();
        std::this_thread::sleep_for(1s); // its window is closed, and its system says so
        NetworkOfItsOwn::setUp(false);
        isOver.wait_for(20s);
    });
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(24 << 20, 'f')});
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    const auto duration = SteadyClock::now() - start;
    EXPECT_GE(duration, 1s);
    EXPECT_LT(duration, 6s); // and not nine
    end.set_value();
}

TEST_F(CurlHttpSessionTest, AServerThatTakesTheWholeBodyAndNeverAnswersTimesOutAfterOneIdleTime)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.waitForClose();
    });
    HttpRequest request = requestTo(server.url());
    request.method = "POST";
    request.body = bodyOf({std::string(1 << 20, 'f')});
    request.timeout = 300ms;
    const auto start = SteadyClock::now();
    EXPECT_EQ(reply(request).error, "The request timed out");
    EXPECT_LT(SteadyClock::now() - start, 2s);
}

TEST_F(CurlHttpSessionTest, ARefusedPortAndAConnectionClosedAtOnceAreErrors)
{
    std::string url;
    {
        RawServer server([](RawConnection&) {});
        expectError(reply(requestTo(server.url())));
        url = server.url();
    }
    expectError(reply(requestTo(url)));
}

// Many, and the end.

TEST_F(CurlHttpSessionTest, FifteenRequestsAreInFlightAtOnce)
{
    std::mutex mutex;
    std::condition_variable changed;
    int arrived = 0;
    RawServer server([&](RawConnection& connection) {
        const std::string request = connection.readRequest();
        std::unique_lock lock(mutex);
        ++arrived;
        changed.notify_all();
        changed.wait_for(lock, 10s, [&] { return arrived == 15; }); // nobody is answered before all are there
        lock.unlock();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n" + request.substr(5, 2));
    });
    std::vector<std::future<HttpReply>> replies;
    for (int i = 10; i < 25; ++i) {
        auto promise = std::make_shared<std::promise<HttpReply>>();
        replies.push_back(promise->get_future());
        m_session->send(requestTo(server.url("/" + std::to_string(i))),
            [promise](HttpReply answer) { promise->set_value(std::move(answer)); });
    }
    for (int i = 10; i < 25; ++i)
        expectReply(replies[static_cast<std::size_t>(i - 10)].get(), 200, std::to_string(i));
    EXPECT_EQ(arrived, 15);
}

TEST_F(CurlHttpSessionTest, CompletionsRunOnOneThreadThatIsNotTheCallersAndMaySend)
{
    RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    std::promise<std::vector<std::thread::id>> promise;
    std::vector<std::thread::id> threads;
    m_session->send(requestTo(server.url()), [&](HttpReply) {
        threads.push_back(std::this_thread::get_id());
        m_session->send(requestTo(server.url()), [&](HttpReply) {
            threads.push_back(std::this_thread::get_id());
            promise.set_value(threads);
        });
    });
    const auto seen = promise.get_future().get();
    EXPECT_EQ(seen[0], seen[1]);
    EXPECT_NE(seen[0], std::this_thread::get_id());
}

TEST_F(CurlHttpSessionTest, DestroyingItWithRequestsInFlightTakesLessThanASecondAndDropsTheirCompletions)
{
    std::atomic<int> arrived = 0;
    RawServer server([&](RawConnection& connection) {
        connection.readHead();
        ++arrived;
        EXPECT_TRUE(connection.waitForClose());
    });
    std::atomic<int> completions = 0;
    const auto captured = std::make_shared<int>(1);
    for (int i = 0; i < 15; ++i) {
        HttpRequest request = requestTo(server.url());
        request.method = i % 2 ? "GET" : "POST";
        if (i % 2 == 0)
            request.body = bodyOf({std::string(1 << 20, 'f')});
        m_session->send(std::move(request), [&completions, captured](HttpReply) { ++completions; });
    }
    while (arrived < 15)
        std::this_thread::sleep_for(1ms);
    m_session->send(requestTo(server.url()), [&completions, captured](HttpReply) { ++completions; });
    const auto start = SteadyClock::now();
    m_session.reset();
    EXPECT_LT(SteadyClock::now() - start, 1s);
    EXPECT_EQ(completions, 0);
    EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(CurlHttpSessionTest, AnIdleSessionIsDestroyedAtOnce)
{
    std::this_thread::sleep_for(20ms);
    const auto start = SteadyClock::now();
    m_session.reset();
    EXPECT_LT(SteadyClock::now() - start, 1s);
}

TEST_F(CurlHttpSessionTest, AUrlTextIsTakenAsItIsOrNotAtAll)
{
    EXPECT_EQ(m_session->urlFromText("http://192.168.1.20:5000/ws"), Url{"http://192.168.1.20:5000/ws"});
    EXPECT_EQ(m_session->urlFromText("http://192.168.1 .20:5000/ws"), std::nullopt);
}

} // namespace companion::testing
