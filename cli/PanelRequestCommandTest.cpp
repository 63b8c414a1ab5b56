#include "cli/Output.h"
#include "cli/RequestCommands.h"
#include "cli/testing/CommandTest.h"
#include "cli/UploadCommand.h"
#include "platform/testing/FakeFileReader.h"

namespace companion::cli::testing {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr auto panel = "192.168.1.20";

class PanelRequestCommandTest : public CommandTest {
protected:
    PanelRequestTools tools() { return {search(), session}; }
    static PanelRequestOptions options() { return {{panel, std::nullopt}, std::nullopt}; }

    void answer(int status, const std::string& body)
    {
        inner.completeWithHttp(0, status, body);
        queue.runPending();
    }
};

class PingCommandTest : public PanelRequestCommandTest {
protected:
    std::string pingAnsweredBy(int status, const std::string& body)
    {
        PingCommand command(tools(), options(), host());
        start(command);
        answer(status, body);
        return resultText();
    }
};

TEST_F(PingCommandTest, AnswerOfStatus200IsDone)
{
    EXPECT_EQ(pingAnsweredBy(200, "OK"), "0 192.168.1.20 answered: OK");
    EXPECT_EQ(inner.request(0).url.text, "http://192.168.1.20:5000/pingServerWithIP?ip=192.168.1.5&msg=ping");
    EXPECT_EQ(jsonText(result->json), R"({"address":"192.168.1.20","status":200,"answer":"OK"})");
}

TEST_F(PingCommandTest, EmptyAnswerIsDone)
{
    EXPECT_EQ(pingAnsweredBy(200, ""), "0 192.168.1.20 answered");
}

TEST_F(PingCommandTest, BusyPanelHasSaidNo)
{
    EXPECT_EQ(pingAnsweredBy(200, "Device is busy"), "1 192.168.1.20 says that it is busy");
}

TEST_F(PingCommandTest, CastingOffHasSaidNoWhateverElseIsSaid)
{
    EXPECT_EQ(pingAnsweredBy(200, "Device is busy CAST_OFF"), "1 192.168.1.20 says that casting is off");
}

TEST_F(PingCommandTest, OtherStatusHasSaidNoWithTheAnswersBeginning)
{
    EXPECT_EQ(pingAnsweredBy(500, std::string(201, 'x')),
        "1 192.168.1.20 answered with status 500: " + std::string(200, 'x') + "...");
}

TEST_F(PingCommandTest, Status204WithoutTextIsARefusalToo)
{
    EXPECT_EQ(pingAnsweredBy(204, ""), "1 192.168.1.20 answered with status 204");
}

TEST_F(PingCommandTest, AnswerThatIsNotUtf8IsStatus4AndNotFatal)
{
    EXPECT_EQ(pingAnsweredBy(200, "\xff"), "4 192.168.1.20: the text of its answer is not UTF-8");
    EXPECT_EQ(jsonText(result->json), R"({"address":"192.168.1.20","status":200})");
}

TEST_F(PingCommandTest, TransportErrorIsStatus4)
{
    PingCommand command(tools(), options(), host());
    start(command);
    inner.fail(0, "Connection refused");
    EXPECT_EQ(resultText(), "none yet");
    queue.runPending();
    EXPECT_EQ(resultText(), "4 192.168.1.20: Connection refused");
}

TEST_F(PingCommandTest, InterfaceWithoutAddressSendsNothingAndIsNamed)
{
    rule.name = "eth9";
    PingCommand command(tools(), options(), host());
    start(command);
    EXPECT_EQ(resultText(), "4 the network interface eth9 has no IPv4 address that a panel could be told");
    EXPECT_THAT(inner.sent(), IsEmpty());
}

TEST_F(PingCommandTest, NoInterfaceTowardsThePanelIsTold)
{
    rule.name = "";
    PingCommand command(tools(), options(), host());
    start(command);
    EXPECT_EQ(resultText(), "4 no network interface leads to 192.168.1.20");
}

TEST_F(PingCommandTest, AnswerThatDoesNotEndIsGivenUpAfter60Seconds)
{
    PingCommand command(tools(), options(), host());
    start(command);
    queue.advance(59'999ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(resultText(), "4 192.168.1.20: no answer within 60 s");
    answer(200, "late");
    EXPECT_EQ(resultText(), "4 192.168.1.20: no answer within 60 s");
}

TEST_F(PingCommandTest, TimeoutOfTheCommandLineIsTheDeadline)
{
    PingCommand command(tools(), {{panel, std::nullopt}, 250ms}, host());
    start(command);
    queue.advance(249ms);
    EXPECT_EQ(resultText(), "none yet");
    queue.advance(1ms);
    EXPECT_EQ(resultText(), "4 192.168.1.20: no answer within 0.25 s");
}

TEST_F(PingCommandTest, PanelIsFoundByName)
{
    PingCommand command(tools(), {{std::nullopt, "Room"}, std::nullopt}, host());
    start(command);
    browsers.findAndResolve("Meridian 65|Room|C0A80114");
    queue.advance(300ms);
    answer(200, "OK");
    EXPECT_EQ(resultText(), "0 192.168.1.20 answered: OK");
}

TEST_F(PingCommandTest, PanelThatIsNotFoundIsStatus3After5Seconds)
{
    PingCommand command(tools(), {{std::nullopt, "Room"}, std::nullopt}, host());
    start(command);
    queue.advance(5s);
    EXPECT_EQ(resultText(), "3 no panel called \"Room\" announced itself within 5 s");
}

TEST_F(PingCommandTest, AddressThatMakesNoUrlIsStatus4)
{
    PingCommand command(tools(), {{"1 2", std::nullopt}, std::nullopt}, host());
    start(command);
    EXPECT_EQ(resultText(), "4 1 2: its address cannot stand in a URL");
}

class TouchbackCommandTest : public PanelRequestCommandTest { };

TEST_F(TouchbackCommandTest, OnOverACableAsksForTouches)
{
    TouchbackCommand command(tools(), options(), host(), {.isOn = true, .isHDMI = true});
    start(command);
    EXPECT_THAT(inner.request(0).url.text, HasSubstr("enable=true&hidemenu=false&isHDMI=true"));
    answer(200, "");
    EXPECT_EQ(resultText(), "0 192.168.1.20 sends its touches to 192.168.1.5");
    EXPECT_THAT(
        jsonText(result->json), HasSubstr(R"("localAddress":"192.168.1.5","enabled":true,"isHDMI":true)"));
}

TEST_F(TouchbackCommandTest, OffIsAskedForAndARefusalIsTold)
{
    TouchbackCommand command(tools(), options(), host(), {.isOn = false, .isHDMI = false});
    start(command);
    EXPECT_THAT(inner.request(0).url.text, HasSubstr("enable=false&hidemenu=true&isHDMI=false"));
    answer(404, "no such thing");
    EXPECT_EQ(resultText(), "1 192.168.1.20 answered with status 404: no such thing");
}

TEST_F(TouchbackCommandTest, AnswerThatIsNotUtf8IsDone)
{
    TouchbackCommand command(tools(), options(), host(), {.isOn = true, .isHDMI = true});
    start(command);
    answer(200, "ok \xff");
    EXPECT_EQ(resultText(), "0 192.168.1.20 sends its touches to 192.168.1.5");
    EXPECT_THAT(jsonText(result->json), HasSubstr("\"status\":200,\"answer\":\"ok \xEF\xBF\xBD\""));
}

TEST_F(TouchbackCommandTest, WithoutALocalAddressNothingIsSent)
{
    addresses.entries.reset();
    TouchbackCommand command(tools(), options(), host(), {.isOn = true, .isHDMI = false});
    start(command);
    EXPECT_EQ(resultText(), "4 the network interface en0 has no IPv4 address that a panel could be told");
}

class TriggerCommandTest : public PanelRequestCommandTest { };

TEST_F(TriggerCommandTest, AnswerIsPrinted)
{
    TriggerCommand command(tools(), options(), host());
    start(command);
    EXPECT_EQ(FakeHttpSession::bodyText(inner.request(0)), R"({"key":"ACTION_CAST"})");
    answer(200, "opening");
    EXPECT_EQ(resultText(), "0 192.168.1.20 was asked to open its receiver: opening");
}

TEST_F(TriggerCommandTest, RefusalIsReadLeniently)
{
    TriggerCommand command(tools(), options(), host());
    start(command);
    answer(503, "no\xff");
    EXPECT_EQ(resultText(), "1 192.168.1.20 answered with status 503: no\xEF\xBF\xBD");
}

TEST_F(TriggerCommandTest, AnswerThatIsNotUtf8IsDoneAndReadLeniently)
{
    TriggerCommand command(tools(), options(), host());
    start(command);
    answer(200, "ok \xff");
    EXPECT_EQ(resultText(), "0 192.168.1.20 was asked to open its receiver: ok \xEF\xBF\xBD");
}

class UploadCommandTest : public PanelRequestCommandTest {
protected:
    UploadCommand::Tools uploadTools()
    {
        return {files, console, output, [](const std::string&) { return "No such file or directory"; }};
    }

    FakeFileReader files{transcript};
};

TEST_F(UploadCommandTest, FileIsSentUnderItsNameAndTheAlertsWordsAreTold)
{
    files.files["/home/me/a.b.png"] = sharedBytes(std::string(1300, 'p'));
    UploadCommand command(tools(), options(), uploadTools(), "/home/me/a.b.png");
    start(command);
    EXPECT_EQ(inner.request(0).url.text, "http://192.168.1.20:5505/uploadfile");
    EXPECT_EQ(inner.request(0).headers[2], (HttpHeader{"srcfilename", "a.b.png"}));
    EXPECT_EQ(inner.request(0).headers[3], (HttpHeader{"filetype", "image/png"}));
    answer(200, "");
    EXPECT_EQ(resultText(), "0 a.b.png (1.3 kB): File Uploaded successfully.");
    EXPECT_THAT(jsonText(result->json), HasSubstr(R"("file":"/home/me/a.b.png","size":1300)"));
}

TEST_F(UploadCommandTest, NameThatIsNotUtf8IsSentAsTheTextThatThePanelCanShow)
{
    files.files["caf\xE9.p\xFFg"] = sharedBytes("x");
    UploadCommand command(tools(), options(), uploadTools(), "caf\xE9.p\xFFg");
    start(command);
    EXPECT_EQ(inner.request(0).headers[2], (HttpHeader{"srcfilename", "caf\uFFFD.p\uFFFDg"}));
    EXPECT_EQ(inner.request(0).headers[3], (HttpHeader{"filetype", "(null)/p\uFFFDg"}));
    answer(200, "");
    EXPECT_EQ(resultText(), "0 caf\uFFFD.p\uFFFDg (1 byte): File Uploaded successfully.");
}

TEST_F(UploadCommandTest, AnswerThatIsNotUtf8IsDone)
{
    files.files["a.txt"] = sharedBytes("x");
    UploadCommand command(tools(), options(), uploadTools(), "a.txt");
    start(command);
    answer(200, "ok \xff");
    EXPECT_EQ(resultText(), "0 a.txt (1 byte): File Uploaded successfully.");
}

TEST_F(UploadCommandTest, RefusalIsStatus1)
{
    files.files["a.txt"] = sharedBytes("x");
    UploadCommand command(tools(), options(), uploadTools(), "a.txt");
    start(command);
    answer(201, "");
    EXPECT_EQ(resultText(), "1 192.168.1.20 answered with status 201");
}

TEST_F(UploadCommandTest, FileThatCannotBeReadIsStatus2)
{
    UploadCommand command(tools(), options(), uploadTools(), "a.txt");
    start(command);
    EXPECT_EQ(resultText(), "2 cannot send a.txt: No such file or directory");
    EXPECT_THAT(inner.sent(), IsEmpty());
}

TEST_F(UploadCommandTest, NameWithALineBreakIsNotSent)
{
    files.files["a\nb"] = sharedBytes("x");
    UploadCommand command(tools(), options(), uploadTools(), "a\nb");
    start(command);
    EXPECT_EQ(resultText(), "2 cannot send a\nb: a line break in its name cannot be sent");
    EXPECT_THAT(inner.sent(), IsEmpty());
}

TEST_F(UploadCommandTest, UploadMayTakeLongerThanItMayStandStill)
{
    files.files["a.txt"] = sharedBytes("x");
    UploadCommand command(tools(), {{panel, std::nullopt}, 250ms}, uploadTools(), "a.txt");
    start(command);
    queue.advance(1h);
    EXPECT_EQ(resultText(), "none yet");
    answer(200, "");
    EXPECT_EQ(result->status, ExitStatus::done);
}

TEST_F(UploadCommandTest, BarIsShownOnATerminalOnly)
{
    files.files["a.txt"] = sharedBytes("x");
    UploadCommand quiet(tools(), options(), uploadTools(), "a.txt");
    start(quiet);
    EXPECT_FALSE(inner.request(0).progress);
    answer(200, "");
    result.reset();

    output.width = 40;
    UploadCommand showing(tools(), options(), uploadTools(), "a.txt");
    start(showing);
    inner.request(1).progress(0, 1000);
    inner.request(1).progress(500, 1000);
    inner.request(1).progress(1000, 1000);
    EXPECT_THAT(output.lines,
        ElementsAre(HasSubstr("  0 %  0 bytes of 1.0 kB"), HasSubstr("100 %  1.0 kB of 1.0 kB")));
}

TEST(VerboseLogTest, LinesAreToldOnlyToThoseWhoAskForThem)
{
    FakeOutput output;
    VerboseLog(output, /*isVerbose=*/false).print("a");
    VerboseLog(output, /*isVerbose=*/true).print("b");
    VerboseLog(output, /*isVerbose=*/true).log("c");
    EXPECT_THAT(output.lines, ElementsAre("err b", "err c"));
}

} // namespace companion::cli::testing
