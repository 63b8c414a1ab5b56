#include "cli/DoctorCommand.h"

#include "cli/testing/CommandTest.h"

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

class DoctorCommandTest : public CommandTest {
protected:
    DoctorCommand::Tools tools()
    {
        return {search(), sockets, session, host(), output, [this] { return now; }};
    }

    static DoctorCommand::Request about(PanelChoice choice, bool awaitsTouches = false)
    {
        DoctorCommand::Request request;
        request.choice = std::move(choice);
        request.awaitsTouches = awaitsTouches;
        request.version = "panelctl 1";
        request.system = "Debian";
        return request;
    }
};

TEST_F(DoctorCommandTest, EverythingIsLookedAtInOrder)
{
    DoctorCommand command(tools(), about({}));
    start(command);
    browsers.findAndResolve("Meridian 65|Room|C0A80114");
    queue.advance(2999ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(resultText(), "0 8 checks: 8 ok, 0 warnings, 0 failed");
    EXPECT_THAT(output.lines,
        ElementsAre("ok version: panelctl 1 on Debian", "ok mDNS daemon: avahi 0.8 runs",
            "ok panels: Room (192.168.1.20)",
            "ok network interface: en0 (leads to 192.168.1.20) with 192.168.1.5",
            "ok panel's port 5000: 192.168.1.20 answers", "ok panel's port 5505: 192.168.1.20 answers",
            "ok UDP port 41863: free",
            "ok display: X display :1; Touches are injected with the XTEST extension of the X server"));
    EXPECT_EQ(sockets.openSockets(), 1U);
    EXPECT_FALSE(sockets.deliver("DOWN,1,1,1")) << "the port is given back";
    EXPECT_THAT(inner.sent(), IsEmpty()) << "panels are asked nothing without --touches";
}

TEST_F(DoctorCommandTest, OfManyPanelsThePortsOfEightAreChecked)
{
    DoctorCommand command(tools(), about({}));
    start(command);
    for (int i = 0; i < 1000; ++i)
        browsers.findAndResolve("Tandem|Room|C0A9" + std::to_string(1000 + i));
    queue.advance(3s);
    EXPECT_EQ(resultText(), "0 22 checks: 22 ok, 0 warnings, 0 failed"); // two ports each, and six others
}

TEST_F(DoctorCommandTest, PanelThatIsMeantEndsTheSearch)
{
    DoctorCommand command(tools(), about({std::nullopt, "Room"}));
    start(command);
    browsers.findAndResolve("Tandem|Hall|C0A80115");
    queue.runPending();
    EXPECT_EQ(resultText(), "none yet");
    browsers.findAndResolve("Meridian 65|Room|C0A80114");
    queue.advance(0s);
    EXPECT_EQ(result->status, ExitStatus::done);
    queue.advance(10s);
}

TEST_F(DoctorCommandTest, FailedCheckIsStatus1AndTheRestIsStillLookedAt)
{
    daemon = {MdnsDaemonState::noDaemon, ""};
    tcpError = "Connection refused";
    DoctorCommand command(tools(), about({"192.168.1.20", std::nullopt}));
    start(command);
    queue.advance(0s);
    EXPECT_EQ(resultText(), "1 8 checks: 4 ok, 1 warning, 3 failed");
}

TEST_F(DoctorCommandTest, WarningsAloneAreStatus0)
{
    DoctorCommand command(tools(), about({}));
    start(command);
    queue.advance(3s);
    EXPECT_EQ(resultText(), "0 7 checks: 5 ok, 2 warnings, 0 failed");
}

TEST_F(DoctorCommandTest, JsonIsEveryCheckAndNoLines)
{
    auto request = about({"192.168.1.20", std::nullopt});
    request.isJson = true;
    DoctorCommand command(tools(), request);
    start(command);
    queue.advance(3s);
    EXPECT_THAT(output.lines, IsEmpty());
    EXPECT_THAT(jsonText(result->json),
        HasSubstr(R"({"check":"UDP port 41863","mark":"ok","found":"free","advice":null})"));
}

class DoctorTouchesTest : public DoctorCommandTest {
protected:
    DoctorTouchesTest()
        : command(tools(), about({"192.168.1.20", std::nullopt}, /*awaitsTouches=*/true))
    {
        daemon = {MdnsDaemonState::noDaemon, ""};
        start(command);
        queue.advance(0s);
    }

    DoctorCommand command;
};

TEST_F(DoctorTouchesTest, PanelIsAskedForTouchesUntilOneComes)
{
    EXPECT_EQ(output.lines.back(), "err touch the panel now");
    ASSERT_EQ(inner.sent().size(), 1U);
    EXPECT_THAT(inner.request(0).url.text, HasSubstr("enable=true"));
    inner.completeWithHttp(0, 200, "");
    now += 697ms;
    sockets.deliver("DOWN,1,1,1", {"192.168.1.21", 5000});
    EXPECT_EQ(inner.sent().size(), 1U) << "somebody else's touch";
    sockets.deliver("DOWN,1,1,1", {"192.168.1.20", 5000});
    ASSERT_EQ(inner.sent().size(), 2U);
    EXPECT_THAT(inner.request(1).url.text, HasSubstr("enable=false"));
    EXPECT_THAT(
        output.lines, ::testing::Contains("ok touches: arrive from 192.168.1.20, the first after 0.697 s"));
    queue.runPending();
    EXPECT_EQ(resultText(), "none yet") << "the panel has not yet been told to stop";
    inner.completeWithHttp(1, 200, "");
    queue.runPending();
    EXPECT_EQ(resultText(), "1 9 checks: 7 ok, 1 warning, 1 failed");
}

TEST_F(DoctorTouchesTest, NoTouchWithin15SecondsFailsAndSilentPanelDoesNotHoldUpTheEnd)
{
    queue.advance(14'999ms);
    EXPECT_EQ(inner.sent().size(), 1U);
    queue.advance(1ms);
    EXPECT_EQ(inner.sent().size(), 2U);
    EXPECT_THAT(output.lines, ::testing::Contains(HasSubstr("fail touches: none within 15 s - a firewall")));
    queue.advance(2999ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(result->status, ExitStatus::refused);
}

TEST_F(DoctorTouchesTest, InterruptedWaitTellsThePanelToStopAndEndsWithItsAnswer)
{
    inner.completeWithHttp(0, 200, "");
    queue.runPending();
    EXPECT_EQ(command.interrupt(), Interruption::endSoon);
    ASSERT_EQ(inner.sent().size(), 2U);
    EXPECT_THAT(inner.request(1).url.text, HasSubstr("enable=false"));
    EXPECT_FALSE(sockets.deliver("DOWN,1,1,1", {"192.168.1.20", 5000})) << "the port is given back";
    EXPECT_EQ(resultText(), "none yet") << "the panel has not yet been told to stop";
    inner.completeWithHttp(1, 200, "");
    queue.runPending();
    EXPECT_NE(resultText(), "none yet");
    queue.advance(60s);
    EXPECT_EQ(inner.sent().size(), 2U) << "it is told once";
}

TEST_F(DoctorTouchesTest, InterruptedWaitEndsAfter3SecondsWhenThePanelIsSilent)
{
    EXPECT_EQ(command.interrupt(), Interruption::endSoon);
    queue.advance(2999ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_NE(resultText(), "none yet");
}

TEST_F(DoctorCommandTest, ThePanelThatWasAskedIsToldToStopThoughAnotherOneHasComeMeanwhile)
{
    DoctorCommand command(tools(), about({}, /*awaitsTouches=*/true));
    start(command);
    browsers.findAndResolve("Meridian 65|Room|C0A80114");
    queue.advance(3s);
    ASSERT_EQ(inner.sent().size(), 1U);
    browsers.findAndResolve("Tandem|Hall|C0A80115");
    queue.runPending();
    sockets.deliver("DOWN,1,1,1", {"192.168.1.21", 5000});
    EXPECT_EQ(inner.sent().size(), 1U) << "somebody else's touch";
    queue.advance(15s);
    ASSERT_EQ(inner.sent().size(), 2U);
    EXPECT_THAT(inner.request(1).url.text, HasSubstr("192.168.1.20:5000"));
    EXPECT_THAT(inner.request(1).url.text, HasSubstr("enable=false"));
}

TEST_F(DoctorCommandTest, APanelThatWasNotAskedIsNotToldToStop)
{
    DoctorCommand command(tools(), about({}, /*awaitsTouches=*/true));
    start(command);
    browsers.findAndResolve("Meridian 65|Room|C0A80114");
    browsers.findAndResolve("Tandem|Hall|C0A80115");
    queue.advance(3s);
    browsers.remove("Tandem|Hall|C0A80115");
    queue.advance(18s);
    EXPECT_THAT(inner.sent(), IsEmpty());
}

TEST_F(DoctorCommandTest, InterruptedBeforeAnyPanelIsAskedItEndsAtOnce)
{
    DoctorCommand command(tools(), about({}, /*awaitsTouches=*/true));
    start(command);
    EXPECT_EQ(command.interrupt(), Interruption::endAtOnce);
    EXPECT_THAT(inner.sent(), IsEmpty());
}

TEST_F(DoctorCommandTest, PortThatIsTakenLeavesTouchesOut)
{
    sockets.bindError = "Address already in use";
    portHolders = {{"panel-companion", 7}};
    DoctorCommand command(tools(), about({"192.168.1.20", std::nullopt}, /*awaitsTouches=*/true));
    start(command);
    queue.advance(3s);
    EXPECT_EQ(resultText(), "0 9 checks: 7 ok, 2 warnings, 0 failed");
    EXPECT_THAT(inner.sent(), IsEmpty());
}

} // namespace companion::cli::testing
