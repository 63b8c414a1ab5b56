#include "tests/http/CurlHttpSessionTest.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

namespace {

using ::testing::AnyOf;
using ::testing::HasSubstr;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isMemoryOurs = false; // a sanitizer keeps freed memory and needs some itself
#else
constexpr bool isMemoryOurs = true;
#endif

constexpr long maximumGrowth = 64L << 10; // KiB

/// The peak of this process's resident memory in KiB since `forgetPeak`.
long peakMemory()
{
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        long kibibytes = 0;
        if (word == "VmHWM:" && status >> kibibytes)
            return kibibytes;
    }
    return 0;
}

void forgetPeak()
{
    std::ofstream("/proc/self/clear_refs") << 5;
}

const std::string chunkedReply = "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n";

} // namespace

/// Servers that never end their reply. Requests to them fail, with bounded memory.
class HostileServerTest : public CurlHttpSessionTest {
protected:
    /// The request's error when the server sends `start`, and then `piece` again and again.
    std::string errorAfterEndless(const std::string& start, const std::string& piece)
    {
        std::string pieces;
        while (pieces.size() < 65'536)
            pieces += piece;
        RawServer server([&](RawConnection& connection) {
            connection.readRequest();
            connection.write(start);
            while (connection.write(pieces)) { }
        });
        forgetPeak();
        const long before = peakMemory();
        const HttpReply answer = reply(requestTo(server.url()));
        const long growth = peakMemory() - before;
        expectError(answer);
        if (isMemoryOurs) {
            EXPECT_LT(growth, maximumGrowth);
        }
        return answer.error.value_or("");
    }
};

TEST_F(HostileServerTest, EndlessBodiesAreErrors)
{
    EXPECT_EQ(errorAfterEndless("HTTP/1.1 200 OK\r\n\r\n", "x"), "The reply is too long");
    EXPECT_EQ(errorAfterEndless(chunkedReply, "1\r\nx\r\n"), "The reply is too long");
}

TEST_F(HostileServerTest, EndlessHeaderFieldsAreAnError)
{
    errorAfterEndless("HTTP/1.1 200 OK\r\n", "T:\r\n");
    errorAfterEndless("HTTP/1.1 200 OK\r\n", "T: " + std::string(1'000, 'x') + "\r\n");
    errorAfterEndless("HTTP/1.1 200 OK\r\nT: ", "x");
}

TEST_F(HostileServerTest, EndlessInterimResponsesAreAnError)
{
    errorAfterEndless("", "HTTP/1.1 100 Continue\r\n\r\n");
    errorAfterEndless("", "HTTP/1.1 103 Early Hints\r\nT: x\r\n\r\n");
}

TEST_F(HostileServerTest, EndlessTrailerFieldsAreAnError)
{
    EXPECT_THAT(errorAfterEndless(chunkedReply + "2\r\nOK\r\n0\r\n", "T:\r\n"),
        AnyOf("The reply is too long", HasSubstr("Too many response headers"))); // libcurl 8 counts them
    errorAfterEndless(chunkedReply + "2\r\nOK\r\n0\r\n", "T: " + std::string(1'000, 'x') + "\r\n");
    errorAfterEndless(chunkedReply + "2\r\nOK\r\n0\r\nT: ", "x");
}

TEST_F(HostileServerTest, EndlessChunkExtensionIsAnError)
{
    EXPECT_EQ(errorAfterEndless(chunkedReply + "2;", "x"), "The reply is too long");
}

TEST_F(HostileServerTest, RepliesThatDripTheirBytesEndAfterTheLongestDuration)
{
    for (const std::string start : {"HTTP/1.1 200 OK\r\n\r\n", "HTTP/1.1 200 OK\r\nT: ",
             "HTTP/1.1 103 Hints\r\nT:", "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2;",
             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n0\r\nT: "}) {
        SCOPED_TRACE(start);
        RawServer server([&](RawConnection& connection) {
            connection.readRequest();
            connection.write(start);
            while (connection.write("x"))
                std::this_thread::sleep_for(30ms);
        });
        HttpRequest request = requestTo(server.url());
        request.timeout = 300ms;
        request.longestDuration = 800ms;
        const auto begin = SteadyClock::now();
        EXPECT_EQ(reply(request).error, "The request timed out");
        EXPECT_GE(SteadyClock::now() - begin, 790ms);
        EXPECT_LT(SteadyClock::now() - begin, 3s);
    }
}

TEST_F(HostileServerTest, ErrorStatusWithoutALengthBeforeTheBodyIsReadIsTheReply)
{
    for (const std::string start : {"HTTP/1.1 413 Too Large\r\n\r\n", "HTTP/1.0 500 Broken\r\n\r\n",
             "HTTP/1.1 404 None\r\nConnection: close\r\n\r\n", "HTTP/1.1 200 OK\r\n\r\n",
             "HTTP/1.1 413 Too Large\r\nTransfer-Encoding: chunked\r\n\r\n4\r\nfu"}) {
        for (const std::size_t size : {100u << 10, 24u << 20}) {
            RawServer server([&](RawConnection& connection) {
                connection.readHead();
                connection.write(start);
                std::this_thread::sleep_for(50ms); // the client has read the reply before the reset arrives
                connection.reset();
            });
            SCOPED_TRACE(start);
            const HttpReply answer = reply(uploadTo(server.url(), size));
            if (start.ends_with("\r\n\r\n") && start.find("200") == std::string::npos)
                expectReply(answer, std::stoi(start.substr(9)), "");
            else
                expectError(answer); // it was cut off, or may have been
        }
    }
}

using HostileServerDeathTest = HostileServerTest;

TEST_F(HostileServerDeathTest, WithoutFileDescriptorsRequestsFailAtOnceAndWorkAgainLater)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer of undefined behaviour needs descriptors for its own checks";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [this] {
        RawServer server(answering("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok"));
        std::vector<int> taken;
        const rlimit few{64, 64};
        setrlimit(RLIMIT_NOFILE, &few);
        for (int fd = 0; (fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;)
            taken.push_back(fd);
        const auto start = SteadyClock::now();
        for (int count = 0; count < 3; ++count)
            expectError(reply(requestTo(server.url())));
        EXPECT_LT(SteadyClock::now() - start, 2s);
        EXPECT_EQ(m_transcript.take(), "log HTTP requests fail: libcurl cannot start");
        for (const int fd : taken)
            close(fd);
        expectReply(reply(requestTo(server.url())), 200, "ok");
        EXPECT_EQ(m_transcript.take(), "");
        m_session.reset();
        EXPECT_LT(SteadyClock::now() - start, 5s);
    };
    const auto runAndExit = [&] {
        run();
        _exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(runAndExit(), ::testing::ExitedWithCode(0), "");
}

TEST_F(HostileServerDeathTest, RequestsInFlightFailAtOnceWhenLibcurlCannotPollAnyMore)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer of undefined behaviour needs descriptors for its own checks";
#endif
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto run = [this] {
        std::promise<void> arrival;
        RawServer server([&](RawConnection& connection) {
            connection.readRequest();
            arrival.set_value();
            std::this_thread::sleep_for(10s); // until this process ends
        });
        std::promise<HttpReply> promise;
        m_session->send(
            requestTo(server.url()), [&](HttpReply answer) { promise.set_value(std::move(answer)); });
        arrival.get_future().wait();
        const rlimit none{0, 64}; // poll refuses more descriptors than that
        setrlimit(RLIMIT_NOFILE, &none);
        const auto start = SteadyClock::now();
        expectError(reply(requestTo(server.url())));
        expectError(promise.get_future().get());
        EXPECT_EQ(m_transcript.lines().size(), 1u);
        m_session.reset();
        EXPECT_LT(SteadyClock::now() - start, 2s);
        _exit(HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), ::testing::ExitedWithCode(0), "");
}

} // namespace companion::testing
