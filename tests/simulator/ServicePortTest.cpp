#include "tests/simulator/SimulatorProcess.h"

#include <QJsonArray>

#include <gmock/gmock.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;

constexpr auto pingTarget = "/pingServerWithIP?ip=192.168.171.5&msg=ping";
constexpr auto touchback = "/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true";

class ServicePortTest : public ::testing::Test {
protected:
    void replyWith(const std::string& mode)
    {
        const HttpReply reply = panel.post("/simulator/reply", mode);
        ASSERT_EQ(reply.status, 200) << reply.body;
    }

    SimulatorProcess panel;
};

TEST_F(ServicePortTest, PingIsAnsweredAndCounted)
{
    const HttpReply reply = panel.get(pingTarget);
    EXPECT_EQ(reply.status, 200);
    EXPECT_EQ(reply.body, "OK");
    const QJsonObject pings = panel.state()["pings"].toObject();
    EXPECT_EQ(pings["count"].toInt(), 1);
    EXPECT_EQ(pings["lastIp"].toString(), "192.168.171.5");
    EXPECT_EQ(pings["times"].toArray().size(), 1);
}

TEST_F(ServicePortTest, OnlyTheLast100PingTimesAreKept)
{
    HttpClient client(panel.address(), panel.servicePort());
    for (int i = 0; i < 103; ++i) {
        client.send(httpRequest("GET", pingTarget));
        ASSERT_EQ(client.receive().status, 200);
    }
    const QJsonObject pings = panel.state()["pings"].toObject();
    EXPECT_EQ(pings["count"].toInt(), 103);
    EXPECT_EQ(pings["times"].toArray().size(), 100);
}

TEST_F(ServicePortTest, InvalidPingIsRefusedInOneLineAndNotCounted)
{
    for (const char* target :
        {"/pingServerWithIP", "/pingServerWithIP?ip=&msg=ping", "/pingServerWithIP?ip=1.2.3&msg=ping",
            "/pingServerWithIP?ip=1.2.3.4&msg=pong", "/pingServerWithIP?ip=1.2.3.4"}) {
        const HttpReply reply = panel.get(target);
        EXPECT_EQ(reply.status, 400) << target;
        EXPECT_EQ(reply.body.find('\n'), reply.body.size() - 1) << target;
    }
    EXPECT_EQ(panel.state()["pings"].toObject()["count"].toInt(), 0);
}

TEST_F(ServicePortTest, TouchbackKeepsWhoAskedAndWithWhichFlags)
{
    EXPECT_TRUE(panel.state()["touchTarget"].isNull());
    EXPECT_EQ(panel.get(touchback).status, 200);
    EXPECT_EQ(panel.state()["touchTarget"].toObject(),
        (QJsonObject{{"ip", "127.0.0.1"}, {"enabled", true}, {"hidemenu", false}, {"isHDMI", true}}));
    panel.get("/enableWifiTouchback?ip=10.0.2.15&enable=false&hidemenu=true&isHDMI=false");
    EXPECT_EQ(panel.state()["touchTarget"].toObject(),
        (QJsonObject{{"ip", "10.0.2.15"}, {"enabled", false}, {"hidemenu", true}, {"isHDMI", false}}));
}

TEST_F(ServicePortTest, TouchbackFlagsAreTrueOrFalseAndNothingElse)
{
    for (const char* query : {"ip=127.0.0.1&enable=yes&hidemenu=false&isHDMI=true",
             "ip=127.0.0.1&enable=true&hideMenu=false&isHDMI=true",
             "ip=127.0.0.1&enable=true&hidemenu=false&ishdmi=true",
             "ip=panel&enable=true&hidemenu=false&isHDMI=true"})
        EXPECT_EQ(panel.get("/enableWifiTouchback?" + std::string(query)).status, 400) << query;
    EXPECT_TRUE(panel.state()["touchTarget"].isNull());
}

TEST_F(ServicePortTest, TriggerIsCountedWhenItsBodyIsRight)
{
    EXPECT_EQ(panel.post("/ws", R"({"key":"ACTION_CAST"})").status, 200);
    for (const char* body : {"", "{", "[]", R"({"key":"ACTION_STOP"})", R"({"key":1})"})
        EXPECT_EQ(panel.post("/ws", body).status, 400) << body;
    EXPECT_EQ(panel.state()["triggers"].toObject()["count"].toInt(), 1);
}

TEST_F(ServicePortTest, UnknownPathsAre404AndWrongMethods405)
{
    EXPECT_EQ(panel.get("/index.html").status, 404);
    EXPECT_EQ(panel.get("/pingserverwithip").status, 404);
    EXPECT_EQ(panel.get("/simulator/").status, 404);
    EXPECT_EQ(panel.get("/uploadfile").status, 404);
    const HttpReply posted = panel.post(pingTarget, "");
    EXPECT_EQ(posted.status, 405);
    EXPECT_THAT(posted.head, HasSubstr("\r\nAllow: GET\r\n"));
    EXPECT_EQ(panel.post(touchback, "").status, 405);
    EXPECT_THAT(panel.get("/ws").head, HasSubstr("\r\nAllow: POST\r\n"));
}

TEST_F(ServicePortTest, CastOffAndBusyHaveTheirFixedTexts)
{
    replyWith("cast-off");
    EXPECT_EQ(panel.ping().body, "CAST_OFF");
    replyWith("busy");
    EXPECT_EQ(panel.ping().body, "Device is busy");
    replyWith("text both: Device is busy, CAST_OFF");
    EXPECT_EQ(panel.ping().body, "both: Device is busy, CAST_OFF");
    replyWith("ok");
    EXPECT_EQ(panel.ping().body, "OK");
}

TEST_F(ServicePortTest, StatusComesWithItsTextOrEmpty)
{
    replyWith("status 503 not today");
    EXPECT_EQ(panel.ping().status, 503);
    EXPECT_EQ(panel.ping().body, "not today");
    replyWith("status 404");
    const HttpReply notFound = panel.ping();
    EXPECT_EQ(notFound.status, 404);
    EXPECT_THAT(notFound.head, HasSubstr("\r\nContent-Length: 0\r\n"));
    replyWith("status 204");
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", pingTarget, "", "Connection: close\r\n"));
    EXPECT_EQ(client.receive().status, 204);
}

TEST_F(ServicePortTest, SilenceLastsUntilTheModeChanges)
{
    replyWith("silence");
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", pingTarget));
    const HttpReply nothing = client.receive(300ms);
    EXPECT_EQ(nothing.status, 0);
    EXPECT_FALSE(nothing.isClosed);
    replyWith("busy");
    EXPECT_EQ(client.receive().body, "Device is busy");
}

TEST_F(ServicePortTest, SilenceThatIsRenewedStaysSilent)
{
    replyWith("silence");
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", pingTarget));
    EXPECT_EQ(client.receive(100ms).status, 0);
    replyWith("silence");
    const HttpReply nothing = client.receive(200ms);
    EXPECT_EQ(nothing.status, 0);
    EXPECT_FALSE(nothing.isClosed);
}

TEST_F(ServicePortTest, ClientsThatLeaveASilenceFreeTheirConnections)
{
    replyWith("silence");
    for (int i = 0; i < 900; ++i) { // more than the server allows at once
        HttpClient client(panel.address(), panel.servicePort());
        client.send(httpRequest("GET", pingTarget));
    }
    replyWith("ok");
    EXPECT_EQ(panel.ping().body, "OK");
}

TEST_F(ServicePortTest, CloseSendsNothing)
{
    replyWith("close");
    const HttpReply reply = panel.ping();
    EXPECT_TRUE(reply.isClosed);
    EXPECT_EQ(reply.head + reply.body, "");
    EXPECT_EQ(panel.state()["pings"].toObject()["count"].toInt(), 1);
}

TEST_F(ServicePortTest, InvalidIsStatus200WithABodyThatIsNotUtf8)
{
    replyWith("invalid");
    const HttpReply reply = panel.ping();
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.body, HasSubstr("\xFF"));
}

TEST_F(ServicePortTest, CutEndsHalfWayThroughThePromisedBody)
{
    replyWith("cut");
    const HttpReply reply = panel.ping();
    EXPECT_EQ(reply.status, 200);
    EXPECT_THAT(reply.head, HasSubstr("\r\nContent-Length: 100\r\n"));
    EXPECT_EQ(reply.body.size(), 50U);
    EXPECT_TRUE(reply.isClosed);
}

TEST_F(ServicePortTest, Huge3Is3000000Bytes)
{
    replyWith("huge 3");
    EXPECT_EQ(panel.ping().body.size(), 3'000'000U);
}

TEST_F(ServicePortTest, EndlessGoesOnAndOthersAreServedMeanwhile)
{
    replyWith("endless");
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", pingTarget));
    const HttpReply reply = client.receive(10s, 2'000'000);
    EXPECT_THAT(reply.head, HasSubstr("Transfer-Encoding: chunked"));
    EXPECT_GE(reply.body.size(), 2'000'000U);
    EXPECT_EQ(panel.state()["pings"].toObject()["count"].toInt(), 1);
}

TEST_F(ServicePortTest, DelayOf250MillisecondsDelaysNoOtherRequest)
{
    replyWith("delay 250 cast-off");
    const auto start = std::chrono::steady_clock::now();
    HttpClient client(panel.address(), panel.servicePort());
    client.send(httpRequest("GET", pingTarget));
    EXPECT_EQ(panel.get(touchback).status, 200);
    EXPECT_EQ(client.receive().body, "CAST_OFF");
    EXPECT_GE(std::chrono::steady_clock::now() - start, 250ms);
}

TEST_F(ServicePortTest, EachRequestHasItsOwnMode)
{
    replyWith("touchback status 500");
    replyWith("trigger invalid");
    EXPECT_EQ(panel.ping().body, "OK");
    EXPECT_EQ(panel.get(touchback).status, 500);
    EXPECT_THAT(panel.post("/ws", R"({"key":"ACTION_CAST"})").body, HasSubstr("\xFF"));
    EXPECT_EQ(panel.state()["reply"].toObject(),
        (QJsonObject{
            {"heartbeat", "ok"}, {"touchback", "status 500"}, {"trigger", "invalid"}, {"upload", "ok"}}));
}

} // namespace
} // namespace companion::testing
