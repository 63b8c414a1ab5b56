#pragma once

#include "platform/curl/CurlHttpSession.h"
#include "platform/testing/FakeLog.h"
#include "tests/http/RawServer.h"

#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

inline HttpBody bodyOf(const std::vector<std::string>& pieces)
{
    HttpBody body;
    for (const std::string& piece : pieces)
        body.push_back(sharedBytes(piece));
    return body;
}

/// Answers each connection with the same bytes, once it has read the whole request.
inline RawServer::Handler answering(std::string reply)
{
    return [reply = std::move(reply)](RawConnection& connection) {
        connection.readRequest();
        connection.write(reply);
    };
}

/// A real HTTP session, for requests to raw servers on loopback.
class CurlHttpSessionTest : public ::testing::Test {
protected:
    HttpRequest requestTo(const std::string& url)
    {
        HttpRequest request;
        request.url = Url{url};
        request.timeout = 5s;
        return request;
    }

    HttpRequest uploadTo(const std::string& url, std::size_t size = 24 << 20)
    {
        HttpRequest request = requestTo(url);
        request.method = HttpMethod::post;
        request.body = bodyOf({std::string(size, 'f')});
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

    /// libcurl 8 takes fewer odd status lines for HTTP than libcurl 7, and names them in its error.
    void expectReplyOrRefusal(const HttpReply& answer, int status, const std::string& data)
    {
        if (answer.error.value_or("").rfind("Unsupported HTTP", 0) != 0)
            expectReply(answer, status, data);
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

} // namespace companion::testing
