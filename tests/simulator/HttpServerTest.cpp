#include "simulator/HttpServer.h"

#include "tests/simulator/HttpClient.h"

#include <gtest/gtest.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using namespace simulator;

/// Takes every piece of a body for a second and a half.
class SlowExchange : public Exchange {
public:
    explicit SlowExchange(const Request& request)
        : m_request(request)
    {
    }

    std::optional<Outcome> headArrived() override { return std::nullopt; }

    std::optional<Outcome> bodyArrived(std::string_view) override
    {
        return m_request.wait(1500ms) ? std::nullopt : std::optional<Outcome>(HangUp());
    }

    Outcome requestComplete() override { return lineAnswer(200, "late"); }

private:
    const Request& m_request;
};

/// Connections may be idle for a second.
class HttpServerTest : public ::testing::Test {
protected:
    const HttpServer server{
        "127.0.0.1", 0, [](const Request& request) { return std::make_unique<SlowExchange>(request); }, 1s};
    HttpClient client{"127.0.0.1", server.port()};
};

TEST_F(HttpServerTest, BodyThatIsTakenMoreSlowlyThanTheIdleTimeOutIsAnswered)
{
    client.send(httpRequest("POST", "/", std::string(100'000, 'x')));
    EXPECT_EQ(client.receive().body, "late\n");
}

TEST_F(HttpServerTest, ConnectionThatIsIdleForTheTimeOutIsClosed)
{
    EXPECT_TRUE(client.receive().isClosed);
}

} // namespace
} // namespace companion::testing
