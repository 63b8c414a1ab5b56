#include "simulator/HttpServer.h"

#include "tests/simulator/HttpClient.h"

#include <gtest/gtest.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using namespace simulator;

/// Answers requests after a second and a half, with connections that may be idle for one.
std::unique_ptr<Exchange> answerLate(const Request& request)
{
    return collectBody(request, [](const Request& waiting, const std::string&) -> Outcome {
        return waiting.wait(1500ms) ? Outcome(lineAnswer(200, "late")) : Outcome(HangUp());
    });
}

TEST(HttpServerTest, AnswerThatWaitsForLongerThanTheIdleTimeOutArrives)
{
    const HttpServer server("127.0.0.1", 0, answerLate, /*idleTimeout=*/1s);
    HttpClient client("127.0.0.1", server.port());
    client.send(httpRequest("GET", "/"));
    EXPECT_EQ(client.receive().body, "late\n");
}

TEST(HttpServerTest, ConnectionThatIsIdleForTheTimeOutIsClosed)
{
    const HttpServer server("127.0.0.1", 0, answerLate, /*idleTimeout=*/1s);
    HttpClient client("127.0.0.1", server.port());
    EXPECT_TRUE(client.receive().isClosed);
}

} // namespace
} // namespace companion::testing
