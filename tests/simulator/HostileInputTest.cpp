#include "tests/simulator/SimulatorProcess.h"

#include <gtest/gtest.h>

#include <memory>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;

class HostileInputTest : public ::testing::Test {
protected:
    HttpReply send(const std::string& bytes)
    {
        HttpClient client(panel.address(), panel.servicePort());
        client.send(bytes);
        return client.receive(500ms);
    }

    void TearDown() override
    {
        EXPECT_EQ(panel.ping().body, "OK") << "the server no longer answers";
        panel.process().sendSignal(SIGTERM);
        EXPECT_EQ(panel.process().waitForExit(), 0) << panel.process().output();
    }

    SimulatorProcess panel;
};

TEST_F(HostileInputTest, GarbageDoesNotStopTheServer)
{
    send(std::string(5000, '\0'));
    send("\r\n\r\n\r\n");
    send("GET\r\n\r\n");
    send("\x16\x03\x01\x02\x00\x01\x00\x01\xFC\x03\x03");
    send("GET /%00%ff%zz?%=%&ip=%00 HTTP/9.9\r\n\r\n");
}

TEST_F(HostileInputTest, InvalidContentLengthsAreRefused)
{
    for (const char* length : {"-1", "99999999999999999999999", "x", "1x"})
        EXPECT_GE(send("POST /ws HTTP/1.1\r\nHost: p\r\nContent-Length: " + std::string(length) + "\r\n\r\n")
                      .status,
            400)
            << length;
}

TEST_F(HostileInputTest, HeadOf2MegabytesIsRefused)
{
    EXPECT_GE(send("GET /" + std::string(2'000'000, 'a') + " HTTP/1.1\r\n\r\n").status, 400);
    EXPECT_GE(send("GET /ws HTTP/1.1\r\nX: " + std::string(2'000'000, 'a') + "\r\n\r\n").status, 400);
}

TEST_F(HostileInputTest, BodyOf1048576BytesIsReadAndOneByteMoreIsNot)
{
    EXPECT_EQ(panel.post("/simulator/reply", std::string(1'048'576, ' ')).status, 400);
    EXPECT_EQ(
        send("POST /simulator/reply HTTP/1.1\r\nHost: p\r\nContent-Length: 1048577\r\n\r\n").status, 413);
}

TEST_F(HostileInputTest, ChunkedBodyIsLimitedToo)
{
    HttpClient client(panel.address(), panel.servicePort());
    client.send("POST /simulator/touch HTTP/1.1\r\nHost: p\r\nTransfer-Encoding: chunked\r\n\r\n");
    for (int i = 0; i < 17; ++i)
        client.send("10000\r\n" + std::string(65536, 'x') + "\r\n");
    client.send("0\r\n\r\n");
    EXPECT_EQ(client.receive().status, 413);
}

TEST_F(HostileInputTest, EndlessChunkedBodyIsDisconnected)
{
    HttpClient client(panel.address(), panel.servicePort());
    client.send("POST /simulator/touch HTTP/1.1\r\nHost: p\r\nTransfer-Encoding: chunked\r\n\r\n");
    int megabytes = 0;
    while (megabytes < 64 && client.send("100000\r\n" + std::string(1'048'576, 'x') + "\r\n"))
        ++megabytes;
    EXPECT_LT(megabytes, 64);
}

TEST_F(HostileInputTest, IncompleteRequestsDoNotBlockOthers)
{
    std::vector<std::unique_ptr<HttpClient>> slow;
    for (int i = 0; i < 200; ++i) {
        slow.push_back(std::make_unique<HttpClient>(panel.address(), panel.servicePort()));
        slow.back()->send(i % 2 == 0
                ? "GET /pingServer"
                : "POST /simulator/touch HTTP/1.1\r\nHost: p\r\nContent-Length: 9\r\n\r\nUP");
    }
    EXPECT_EQ(panel.ping().body, "OK");
    for (const auto& client : slow)
        client->send("x");
    EXPECT_EQ(panel.ping().body, "OK");
}

TEST_F(HostileInputTest, SilentConnectionsDoNotBlockNewOnes)
{
    std::vector<std::unique_ptr<HttpClient>> silent;
    for (int i = 0; i < 450; ++i)
        silent.push_back(std::make_unique<HttpClient>(panel.address(), panel.servicePort()));
    EXPECT_EQ(panel.ping().body, "OK");
}

TEST_F(HostileInputTest, UnansweredRequestsDoNotBlockNewOnes)
{
    panel.post("/simulator/reply", "silence");
    std::vector<std::unique_ptr<HttpClient>> waiting;
    for (int i = 0; i < 450; ++i) {
        waiting.push_back(std::make_unique<HttpClient>(panel.address(), panel.servicePort()));
        waiting.back()->send(httpRequest("GET", "/pingServerWithIP?ip=127.0.0.1&msg=ping"));
    }
    EXPECT_EQ(panel.post("/simulator/reply", "ok").status, 200);
    for (const auto& client : waiting)
        ASSERT_EQ(client->receive().body, "OK");
}

TEST_F(HostileInputTest, ConnectionsThatComeAndGoAreForgotten)
{
    for (int i = 0; i < 1000; ++i)
        HttpClient(panel.address(), panel.servicePort()).send(i % 3 == 0 ? "GET" : "");
}

TEST_F(HostileInputTest, RequestsInOnePacketAreAnsweredInOrder)
{
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", "/nothing") + httpRequest("GET", "/pingServerWithIP?ip=1.2.3.4&msg=ping"));
    EXPECT_EQ(client.receive().status, 404);
}

} // namespace
} // namespace companion::testing
