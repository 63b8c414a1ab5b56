#include "tests/simulator/SimulatorProcess.h"
#include "tests/simulator/TouchListener.h"

#include <gmock/gmock.h>

#include <future>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::MatchesRegex;

class ControlInterfaceTest : public ::testing::Test {
protected:
    HttpReply askForTouches(const std::string& enable = "true")
    {
        return panel.get(
            "/enableWifiTouchback?ip=127.0.0.1&enable=" + enable + "&hidemenu=false&isHDMI=true");
    }

    std::string nextTouch()
    {
        const auto datagram = listener.receive();
        return datagram ? datagram->bytes : "nothing";
    }

    TouchListener listener;
    SimulatorProcess panel{{"--no-announce", "--touch-port", listener.port(), "--name", "Größe"}};
};

TEST_F(ControlInterfaceTest, StateTellsWhatThePanelIs)
{
    const QJsonObject state = panel.state();
    EXPECT_EQ(state["model"].toString(), "Meridian 65");
    EXPECT_EQ(state["name"].toString(), "Größe");
    EXPECT_EQ(state["address"].toString(), "127.0.0.1");
    EXPECT_EQ(state["servicePort"].toInt(), panel.servicePort());
    EXPECT_EQ(state["uploadPort"].toInt(), panel.uploadPort());
    EXPECT_EQ(std::to_string(state["touchPort"].toInt()), listener.port());
    EXPECT_FALSE(state["announced"].toBool());
}

TEST_F(ControlInterfaceTest, StateHasItsKeysInTheDocumentedOrder)
{
    const std::string json = panel.get("/simulator/state").body;
    std::size_t last = 0;
    for (const char* key :
        {"model", "name", "address", "announced", "announcedAs", "servicePort", "uploadPort", "touchPort",
            "touchTarget", "touchesSent", "pings", "triggers", "uploads", "replay", "reply"}) {
        const auto place = json.find("\n    \"" + std::string(key) + "\": ");
        ASSERT_NE(place, std::string::npos) << key;
        EXPECT_GE(place, last) << key;
        last = place;
    }
}

TEST_F(ControlInterfaceTest, TextThatIsNotUtf8IsReplacedInTheState)
{
    panel.post("/simulator/reply", "text a\xFFz");
    EXPECT_EQ(panel.state()["reply"].toObject()["heartbeat"].toString(), "text a\uFFFDz");
}

TEST_F(ControlInterfaceTest, TouchesAreRecordsWithTheTimeInMillisecondsSince1970)
{
    askForTouches();
    const auto before = std::chrono::system_clock::now().time_since_epoch() / 1ms;
    EXPECT_EQ(panel.post("/simulator/touch", "DOWN 100 32767\nMOVE 101.5 -7\nUP 102 0\n").body,
        "sent 3 datagrams\n");
    const std::string down = nextTouch();
    EXPECT_THAT(down, MatchesRegex("DOWN,100,32767,[0-9]+;"));
    EXPECT_THAT(nextTouch(), MatchesRegex("MOVE,101.5,-7,[0-9]+;"));
    EXPECT_THAT(nextTouch(), MatchesRegex("UP,102,0,[0-9]+;"));
    const auto time = std::stoll(down.substr(down.rfind(',') + 1));
    EXPECT_GE(time, before);
    EXPECT_LE(time, before + 10'000);
    EXPECT_EQ(panel.state()["touchesSent"].toInt(), 3);
}

TEST_F(ControlInterfaceTest, TouchesComeFromThePanelsAddress)
{
    SimulatorProcess other({"--no-announce", "--touch-port", listener.port()}, "127.0.0.2");
    other.get("/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true");
    other.post("/simulator/touch", "UP 1 2");
    EXPECT_EQ(listener.receive()->from, "127.0.0.2");
}

TEST_F(ControlInterfaceTest, RawTextAndBytesGoOutUntouched)
{
    askForTouches();
    panel.post("/simulator/touch", "RAW DOWN,1,2\nHEX ff00 C3\nRAW");
    EXPECT_EQ(nextTouch(), "DOWN,1,2");
    EXPECT_EQ(nextTouch(), std::string("\xFF\0\xC3", 3));
    EXPECT_EQ(nextTouch(), "");
}

TEST_F(ControlInterfaceTest, LargestDatagramGoesOut)
{
    askForTouches();
    EXPECT_EQ(panel.post("/simulator/touch", "RAW " + std::string(65507, 'x')).status, 200);
    EXPECT_EQ(nextTouch().size(), 65507U);
}

TEST_F(ControlInterfaceTest, PausesComeBeforeTheirTouchAndTheAnswerAfterTheLast)
{
    askForTouches();
    auto answer =
        std::async([this] { return panel.post("/simulator/touch", "DOWN 1 2\nMOVE 3 4 120\nUP 5 6 250"); });
    const auto down = listener.receive();
    const auto move = listener.receive();
    const auto up = listener.receive();
    ASSERT_TRUE(down && move && up);
    EXPECT_EQ(answer.get().status, 200);
    EXPECT_GE(move->time - down->time, 100ms); // the first may have come late
    EXPECT_GE(up->time - down->time, 350ms);
}

TEST_F(ControlInterfaceTest, GesturesArePlayedOneAfterTheOther)
{
    askForTouches();
    auto first = std::async([this] { return panel.post("/simulator/touch", "DOWN 1 1\nUP 1 1 300"); });
    EXPECT_THAT(nextTouch(), MatchesRegex("DOWN,1,1,.*"));
    EXPECT_EQ(panel.post("/simulator/touch", "DOWN 2 2\nUP 2 2").status, 200);
    EXPECT_EQ(first.get().status, 200);
    EXPECT_THAT(nextTouch(), MatchesRegex("UP,1,1,.*"));
    EXPECT_THAT(nextTouch(), MatchesRegex("DOWN,2,2,.*"));
    EXPECT_THAT(nextTouch(), MatchesRegex("UP,2,2,.*"));
}

TEST_F(ControlInterfaceTest, WithoutATouchbackRequestTheStatusIs409)
{
    EXPECT_EQ(panel.post("/simulator/touch", "UP 1 2").status, 409);
    askForTouches();
    EXPECT_EQ(panel.post("/simulator/touch", "UP 1 2").status, 200);
    askForTouches("false");
    const HttpReply reply = panel.post("/simulator/touch", "UP 1 2");
    EXPECT_EQ(reply.status, 409);
    EXPECT_EQ(reply.body, "nobody has asked for touches\n");
}

TEST_F(ControlInterfaceTest, SwitchingOffEndsAGestureThatIsUnderWay)
{
    askForTouches();
    auto answer = std::async([this] { return panel.post("/simulator/touch", "DOWN 1 1\nUP 1 1 500"); });
    EXPECT_THAT(nextTouch(), MatchesRegex("DOWN.*"));
    askForTouches("false");
    const HttpReply reply = answer.get();
    EXPECT_EQ(reply.status, 409);
    EXPECT_EQ(reply.body, "nobody has asked for touches (after 1 datagram)\n");
    EXPECT_FALSE(listener.receive(100ms));
}

TEST_F(ControlInterfaceTest, SwitchingOffEndsALongPause)
{
    askForTouches();
    auto answer = std::async([this] { return panel.post("/simulator/touch", "DOWN 1 1\nUP 1 1 60000"); });
    EXPECT_THAT(nextTouch(), MatchesRegex("DOWN.*"));
    askForTouches("false");
    ASSERT_EQ(answer.wait_for(5s), std::future_status::ready);
    EXPECT_EQ(answer.get().body, "nobody has asked for touches (after 1 datagram)\n");
}

TEST_F(ControlInterfaceTest, GestureWithAWrongLineSendsNothing)
{
    askForTouches();
    const HttpReply reply = panel.post("/simulator/touch", "DOWN 1 2\nJUMP 3 4\n");
    EXPECT_EQ(reply.status, 400);
    EXPECT_EQ(reply.body, "line 2: unknown word \"JUMP\"\n");
    EXPECT_FALSE(listener.receive(100ms));
}

TEST_F(ControlInterfaceTest, UnreachableComputerIsA502)
{
    panel.get("/enableWifiTouchback?ip=255.255.255.255&enable=true&hidemenu=false&isHDMI=true");
    const HttpReply reply = panel.post("/simulator/touch", "UP 1 2");
    EXPECT_EQ(reply.status, 502);
    EXPECT_THAT(reply.body, ::testing::StartsWith("cannot send to 255.255.255.255: "));
}

TEST_F(ControlInterfaceTest, SixtyFourGesturesWaitAndOneMoreIsRefused)
{
    askForTouches();
    std::vector<std::unique_ptr<HttpClient>> clients;
    for (int i = 0; i < 65; ++i) {
        clients.push_back(std::make_unique<HttpClient>(panel.address(), panel.servicePort()));
        clients.back()->send(httpRequest("POST", "/simulator/touch", "UP 1 1\nPAUSE 60000\nUP 2 2"));
        if (i == 0) {
            ASSERT_THAT(nextTouch(), MatchesRegex("UP,1,1,.*")); // it is played, not waiting
        }
    }
    EXPECT_EQ(clients.back()->receive(200ms).status, 0);
    EXPECT_EQ(panel.post("/simulator/touch", "UP 1 2").status, 503);
}

TEST_F(ControlInterfaceTest, UnknownModesAre400InOneLine)
{
    for (const char* path : {"/simulator/reply", "/simulator/upload-reply"}) {
        const HttpReply reply = panel.post(path, "explode\nnow\xFF");
        EXPECT_EQ(reply.status, 400);
        EXPECT_EQ(reply.body.find('\n'), reply.body.size() - 1);
    }
}

TEST_F(ControlInterfaceTest, MethodsAreKept)
{
    EXPECT_EQ(panel.post("/simulator/state", "").status, 405);
    for (const char* path : {"/simulator/touch", "/simulator/reply", "/simulator/upload-reply"})
        EXPECT_EQ(panel.get(path).status, 405);
    EXPECT_EQ(panel.get("/simulator/nothing").status, 404);
}

} // namespace
} // namespace companion::testing
