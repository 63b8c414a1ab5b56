#include "tests/http/CurlHttpSessionTest.h"

#include "platform/curl/CurlTransfer.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>

namespace companion::testing {

using ::testing::AnyOf;
using ::testing::HasSubstr;

// Requests on the wire

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
    request.method = HttpMethod::post;
    request.headers = {{"Accept", "text/plain"}};
    request.body = bodyOf({"{\"key\":", "", "\"ACTION_CAST\"", "}"});
    EXPECT_EQ(wireBytes(request),
        "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nAccept: text/plain\r\nContent-Length: 21\r\n\r\n"
        "{\"key\":\"ACTION_CAST\"}");
}

TEST_F(CurlHttpSessionTest, AContentLengthOf3OnABodyOf200BytesIsReplacedInItsPlaceAndAll200Arrive)
{
    HttpRequest request = requestTo("/uploadfile");
    request.method = HttpMethod::post;
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
    request.method = HttpMethod::post;
    EXPECT_EQ(wireBytes(request), "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nContent-Length: 0\r\n\r\n");
    request.body = HttpBody();
    EXPECT_EQ(wireBytes(request), "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\nContent-Length: 0\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, AGetHasNoLengthEvenWhenGivenOne)
{
    HttpRequest request = requestTo("/");
    request.headers = {{"Content-Length", "3"}};
    EXPECT_EQ(wireBytes(request), "GET / HTTP/1.1\r\nHost: 127.0.0.1:PORT\r\n\r\n");
}

TEST_F(CurlHttpSessionTest, DotSegmentsGoOutAsTheyAre)
{
    HttpRequest request = requestTo("/a/../b?c=%41");
    EXPECT_THAT(wireBytes(request), ::testing::StartsWith("GET /a/../b?c=%41 HTTP/1.1\r\n"));
}

TEST_F(CurlHttpSessionTest, AnUploadOf3MebibytesIsNotHeldBackByExpectAndReportsItsProgress)
{
    HttpRequest request = requestTo("/uploadfile");
    request.method = HttpMethod::post;
    request.body = bodyOf({"head", std::string(3 << 20, 'f'), "tail"});
    const std::uint64_t size = (3 << 20) + 8;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> progress;
    std::thread::id thread;
    request.progress = [&](std::uint64_t sent, std::uint64_t total) {
        progress.emplace_back(sent, total);
        thread = std::this_thread::get_id();
        return true;
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

TEST_F(CurlHttpSessionTest, AUrlThatLibcurlRefusesIsAnError)
{
    RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"));
    expectError(reply(requestTo(server.url("/a b"))));
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpSessionTest, NoOtherProtocolThanHttpIsSpoken)
{
    RawServer server(answering("220 ready\r\n"));
    expectError(reply(requestTo("file:///proc/self/status")));
    for (const char* scheme : {"https", "ftp", "telnet"}) {
        HttpRequest request = requestTo(scheme + server.url().substr(4));
        request.timeout = 1s;
        expectError(reply(request));
    }
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(CurlHttpSessionTest, AFreshReplyIsNotReusedAndNoFieldAboutCachingIsSent)
{
    std::atomic<int> count = 0;
    RawServer server([&](RawConnection& connection) {
        const std::string request = connection.readRequest();
        EXPECT_EQ(request.find("Cache-Control"), std::string::npos);
        EXPECT_EQ(request.find("Pragma"), std::string::npos);
        EXPECT_EQ(request.find("If-"), std::string::npos);
        connection.write(
            "HTTP/1.1 200 OK\r\nCache-Control: max-age=3600\r\nETag: \"1\"\r\nContent-Length: 1\r\n\r\n"
            + std::to_string(++count));
    });
    expectReply(reply(requestTo(server.url())), 200, "1");
    expectReply(reply(requestTo(server.url())), 200, "2");
}

TEST_F(CurlHttpSessionTest, AnUploadIsHandedToTheSystemInPiecesOfMoreThan128KiB)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
    });
    HttpRequest request = uploadTo(server.url());
    std::uint64_t last = 0;
    std::uint64_t largest = 0;
    request.progress = [&](std::uint64_t sent, std::uint64_t) {
        largest = std::max(largest, sent - std::exchange(last, sent));
        return true;
    };
    expectReply(reply(request), 200, "");
    EXPECT_GT(largest, 128u << 10);
}

TEST_F(CurlHttpSessionTest, ARequestThatIsGivenUpClosesItsConnectionThoughNothingMoves)
{
    std::atomic<bool> isGivenUp = false;
    std::atomic<bool> isClosed = false;
    RawServer server([&](RawConnection& connection) {
        connection.readRequest();
        isGivenUp = true;
        isClosed = connection.waitForClose();
    });
    HttpRequest request = uploadTo(server.url());
    request.timeout = 60s;
    request.progress = [&](std::uint64_t, std::uint64_t) { return !isGivenUp; };
    expectError(reply(request));
    for (const auto end = SteadyClock::now() + 10s; !isClosed && SteadyClock::now() < end;)
        std::this_thread::sleep_for(1ms);
    EXPECT_TRUE(isClosed);
}

TEST_F(CurlHttpSessionTest, ARequestThatIsGivenUpFailsThoughItsReplyComesAtTheSameTime)
{
    std::atomic<bool> isGivenUp = false;
    RawServer server([&](RawConnection& connection) {
        connection.readRequest();
        isGivenUp = true;
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    });
    HttpRequest request = uploadTo(server.url());
    request.progress = [&](std::uint64_t, std::uint64_t) { return !isGivenUp; };
    expectError(reply(request));
}

TEST_F(CurlHttpSessionTest, ProxiesOfTheEnvironmentAreNotUsed)
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

// Replies

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

TEST_F(CurlHttpSessionTest, A204Or304FollowedByAResetIsTheReply)
{
    for (const int status : {204, 304}) {
        for (const std::size_t size : {0u, 24u << 20}) {
            RawServer server([status](RawConnection& connection) {
                connection.readHead();
                connection.write("HTTP/1.1 " + std::to_string(status) + " Any\r\n\r\n");
                std::this_thread::sleep_for(50ms);
                connection.reset();
            });
            expectReply(reply(size ? uploadTo(server.url(), size) : requestTo(server.url())), status, "");
        }
    }
}

TEST_F(CurlHttpSessionTest, StatusLinesThatLibcurlToleratesAreReplies)
{
    for (const std::string line : {"HTTP/1.1 200", "HTTP/1.1 200 ", "HTTP/1.0 200 OK", "HTTP/1.1  200 OK",
             "http/1.1 200 OK", "HTTP/1.1 200OK", "HTTP/1.1 200\tOK"}) {
        SCOPED_TRACE(line);
        expectReplyOrRefusal(replyTo(line + "\r\nContent-Length: 2\r\n\r\nok"), 200, "ok");
    }
    EXPECT_THAT(replyTo("HTTP/1.1 20 OK\r\nContent-Length: 2\r\n\r\nok").error.value_or(""),
        AnyOf(HasSubstr("response code"), HasSubstr("Unsupported HTTP")));
}

TEST_F(CurlHttpSessionTest, AStatusLineThatLibcurlTakesForSuccessIsToldByItsOwnStatus)
{
    for (const std::string line : {"http/1.1 404 None", "hTTP/1.0 404 None", "http/1.1\t404", "HTTP/.1 404",
             "HTTP/1.1 404None", "HTTP/1.1  404 None", "HTTP/2 404", "HTTP/1.1 404.1"}) {
        SCOPED_TRACE(line);
        expectReplyOrRefusal(replyTo(line + "\r\nContent-Length: 2\r\n\r\nno"), 404, "no");
    }
    for (const std::string line : {"http/1.1", "http/1.1 ", "http/1.1 None", "http/1.1 2", "http/1.1 -20",
             "http/1.1 099", "HTTP/.1 2x0", "http/1.1 100 Continue"}) {
        SCOPED_TRACE(line);
        expectError(replyTo(line + "\r\nContent-Length: 2\r\n\r\nok"));
    }
}

TEST_F(CurlHttpSessionTest, AReplyWhoseLengthIsNotOneNumberIsAnError)
{
    for (const std::string length : {"99999999999999999999999", "9223372036854775808", "-1", "x", "2x",
             "2\r\nContent-Length: 3", "3\r\nContent-Length: 2"}) {
        const HttpReply answer = replyTo("HTTP/1.1 200 OK\r\nContent-Length: " + length + "\r\n\r\nok");
        SCOPED_TRACE(length);
        expectError(answer);
    }
    expectReply(replyTo("HTTP/1.1 200 OK\r\nContent-Length: 2\r\nContent-Length: 2\r\n\r\nok"), 200, "ok");
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

TEST_F(CurlHttpSessionTest, InterimResponsesAreSkipped)
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
    const std::string head = "HTTP/1.0 200 OK\r\n\r\n";
    const std::size_t room = CurlTransfer::maximumReply - head.size() - 2 * CurlTransfer::headerLineOverhead;
    const HttpReply whole = replyTo(head + std::string(room, 'x'));
    EXPECT_EQ(whole.error, std::nullopt);
    EXPECT_EQ(whole.data.value_or("").size(), room);
    const HttpReply tooLong = replyTo(head + std::string(room + 1, 'x'));
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
        request.method = HttpMethod::post;
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
            request.method = HttpMethod::post;
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
    request.method = HttpMethod::post;
    request.body = bodyOf({std::string(24 << 20, 'f')});
    expectReply(reply(request), 200, "fine");
}

// Concurrency and shutdown

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
        request.method = i % 2 ? HttpMethod::get : HttpMethod::post;
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
    expectReply(replyTo("HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"), 200, "");
    const auto start = SteadyClock::now();
    m_session.reset();
    EXPECT_LT(SteadyClock::now() - start, 1s);
}

TEST_F(CurlHttpSessionTest, ThreadAndLibcurlAreStartedByTheFirstRequest)
{
    const auto threads = [] {
        const auto entries = std::filesystem::directory_iterator("/proc/self/task");
        return std::distance(begin(entries), end(entries));
    };
    const auto before = threads();
    CurlHttpSession session(m_log);
    EXPECT_EQ(threads(), before);
    session.send(requestTo("http://127.0.0.1:1/"), [](const HttpReply&) {});
    EXPECT_EQ(threads(), before + 1);
}

} // namespace companion::testing
