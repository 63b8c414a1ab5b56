#include "panel/TriggerCastingApp.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"
#include "tests/http/RawServer.h"
#include "tests/http/RedirectedSession.h"

#include <gtest/gtest.h>

namespace companion::testing {

using namespace std::chrono_literals;

class TriggerTest : public ::testing::Test {
protected:
    /// What the property holds once it is something else than the address, or after so long.
    std::string obtained(std::chrono::milliseconds patience = 10s)
    {
        app->triggerCastService("127.0.0.1");
        const auto deadline = std::chrono::steady_clock::now() + patience;
        while (app->obtainedDeviceIP() == "127.0.0.1" && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        return app->obtainedDeviceIP().value_or("absent");
    }

    Transcript consoleTranscript;
    FakeConsole console{consoleTranscript};
    Transcript logTranscript;
    FakeSystemLog log{logTranscript};
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule nameRule;
    RedirectedSession session{log, "5000"};
    std::shared_ptr<TriggerCastingApp> app = TriggerCastingApp::make({session, addresses, nameRule, console});
};

TEST_F(TriggerTest, TwentyOneBytesGoOutAndTheAnswerOfStatus500ComesBackReadable)
{
    std::string request;
    RawServer server([&](RawConnection& connection) {
        request = connection.readRequest();
        connection.write("HTTP/1.1 500 Error\r\nContent-Length: 6\r\n\r\nno \xC3\xBC\xFF");
    });
    session.port = server.port();
    EXPECT_EQ(obtained(), "no \xC3\xBC\xEF\xBF\xBD");
    EXPECT_EQ(request,
        "POST /ws HTTP/1.1\r\nHost: 127.0.0.1:" + std::to_string(server.port())
            + "\r\nContent-Type: application/json; charset=utf-8\r\nAccept: application/json; charset=utf-8\r\n"
              "Content-Length: 21\r\n\r\n{\"key\":\"ACTION_CAST\"}");
}

TEST_F(TriggerTest, ConnectionThatBreaksLeavesTheAddress)
{
    RawServer server([](RawConnection& connection) {
        connection.readRequest();
        connection.reset();
    });
    session.port = server.port();
    EXPECT_EQ(obtained(300ms), "127.0.0.1");
    EXPECT_EQ(server.connections(), 1);
}

} // namespace companion::testing
