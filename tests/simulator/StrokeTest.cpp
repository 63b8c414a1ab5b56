#include "tests/simulator/SimulatorProcess.h"
#include "tests/simulator/TouchListener.h"

#include <gmock/gmock.h>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;

class StrokeTest : public ::testing::Test {
protected:
    StrokeTest() { switchTouchback("true"); }

    void switchTouchback(const std::string& enable) const
    {
        panel.get("/enableWifiTouchback?ip=127.0.0.1&enable=" + enable + "&hidemenu=false&isHDMI=true");
    }

    static std::string target(const std::string& stroke, int part)
    {
        return "/simulator/stroke?id=" + stroke + "&part=" + std::to_string(part);
    }

    HttpReply part(const std::string& stroke, int number, const std::string& lines) const
    {
        return panel.post(target(stroke, number), lines);
    }

    /// Without the time of sending.
    std::string nextTouch()
    {
        const auto datagram = listener.receive();
        return datagram ? datagram->bytes.substr(0, datagram->bytes.rfind(',')) : "nothing";
    }

    TouchListener listener;
    SimulatorProcess panel{{"--no-announce", "--touch-port", listener.port()}};
};

TEST_F(StrokeTest, PartsThatOvertakeEachOtherAreSentInOrder)
{
    HttpClient last(panel.address(), panel.servicePort());
    last.send(httpRequest("POST", target("s", 2), "UP 5 6"));
    EXPECT_EQ(last.receive(100ms).status, 0);
    HttpClient middle(panel.address(), panel.servicePort());
    middle.send(httpRequest("POST", target("s", 1), "MOVE 3 4\nMOVE 5 6"));
    EXPECT_EQ(middle.receive(100ms).status, 0);
    EXPECT_EQ(part("s", 0, "DOWN 1 2").status, 200);
    EXPECT_EQ(middle.receive().status, 200);
    EXPECT_EQ(last.receive().status, 200);
    for (const char* touch : {"DOWN,1,2", "MOVE,3,4", "MOVE,5,6", "UP,5,6"})
        EXPECT_EQ(nextTouch(), touch);
}

TEST_F(StrokeTest, PartThatIsRepeatedIsSentOnce)
{
    EXPECT_EQ(part("s", 0, "DOWN 1 2").body, "sent 1 datagram\n");
    EXPECT_EQ(part("s", 0, "DOWN 1 2").body, "sent before\n");
    EXPECT_EQ(part("s", 1, "UP 1 2").status, 200);
    EXPECT_EQ(nextTouch(), "DOWN,1,2");
    EXPECT_EQ(nextTouch(), "UP,1,2");
}

TEST_F(StrokeTest, MissingPartIsSkippedAfterTwoSeconds)
{
    part("s", 0, "DOWN 1 2");
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(part("s", 2, "UP 5 6").status, 200);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 2s);
    EXPECT_EQ(part("s", 1, "MOVE 3 4").body, "sent before\n");
    EXPECT_EQ(nextTouch(), "DOWN,1,2");
    EXPECT_EQ(nextTouch(), "UP,5,6");
    EXPECT_FALSE(listener.receive(50ms));
}

TEST_F(StrokeTest, StrokeWithoutItsBeginningIsRefused)
{
    const HttpReply reply = part("s", 1, "UP 5 6");
    EXPECT_EQ(reply.status, 409);
    EXPECT_EQ(reply.body, "the beginning of the stroke is missing\n");
    EXPECT_FALSE(listener.receive(50ms));
}

TEST_F(StrokeTest, SecondFingerIsRefusedWhileTheFirstIsDown)
{
    part("first", 0, "DOWN 1 2");
    EXPECT_EQ(part("second", 0, "DOWN 7 8").body, "another finger is on the panel\n");
    part("first", 1, "UP 1 2");
    EXPECT_EQ(part("second", 0, "DOWN 7 8").status, 200);
    for (const char* touch : {"DOWN,1,2", "UP,1,2", "DOWN,7,8"})
        EXPECT_EQ(nextTouch(), touch);
}

TEST_F(StrokeTest, FingerThatIsSilentForFiveSecondsIsReleasedBeforeTheNextPress)
{
    part("gone", 0, "DOWN 1 2\nMOVE 31000 17");
    const auto begin = std::chrono::steady_clock::now();
    while (part("next", 0, "DOWN 7 8").status == 409)
        ASSERT_LT(std::chrono::steady_clock::now() - begin, 20s);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 4900ms); // the part before was heard a little earlier
    for (const char* touch : {"DOWN,1,2", "MOVE,31000,17", "UP,31000,17", "DOWN,7,8"})
        EXPECT_EQ(nextTouch(), touch);
    EXPECT_EQ(part("gone", 1, "MOVE 3 4").status, 409);
}

TEST_F(StrokeTest, SwitchingOffEndsTheStrokeWith409)
{
    part("s", 0, "DOWN 1 2");
    switchTouchback("false");
    EXPECT_EQ(part("s", 1, "MOVE 3 4").body, "nobody has asked for touches\n");
    switchTouchback("true");
    EXPECT_EQ(part("s", 1, "MOVE 3 4").body, "the stroke is over\n");
    EXPECT_EQ(part("next", 0, "DOWN 7 8").status, 200);
    EXPECT_EQ(nextTouch(), "DOWN,1,2");
    EXPECT_EQ(nextTouch(), "DOWN,7,8");
}

TEST_F(StrokeTest, StrokeNeedsANameAndANumber)
{
    for (const std::string query : {"", "?id=s", "?part=0", "?id=&part=0", "?id=s&part=-1", "?id=s&part=x"})
        EXPECT_EQ(panel.post("/simulator/stroke" + query, "UP 1 2").status, 400) << query;
    EXPECT_EQ(part(std::string(64, 's'), 0, "DOWN 1 2\nUP 1 2").status, 200);
    EXPECT_EQ(part(std::string(65, 's'), 0, "DOWN 1 2\nUP 1 2").status, 400);
    EXPECT_EQ(part("t", 0, "JUMP 1 2").body, "line 1: unknown word \"JUMP\"\n");
}

} // namespace
} // namespace companion::testing
