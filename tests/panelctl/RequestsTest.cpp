#include "tests/panelctl/PanelctlTest.h"

#include <QCryptographicHash>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace companion::testing {

using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using namespace std::chrono_literals;

class PanelctlRequestsTest : public PanelctlTest {
protected:
    void SetUp() override
    {
        PanelctlTest::SetUp();
        if (!IsSkipped())
            startPanel();
    }
};

TEST_F(PanelctlRequestsTest, PingOfAPanelThatIsThereIsStatus0)
{
    const Ending ending = runAtPanel({"ping"});
    EXPECT_EQ(ending.output, "127.0.0.1 answered: OK\n");
    EXPECT_EQ(ending.status, 0);
    EXPECT_EQ(panel->state()["pings"].toObject()["lastIp"].toString(), "127.0.0.1");
}

TEST_F(PanelctlRequestsTest, PingTellsJson)
{
    const Ending ending = runAtPanel({"ping", "--json"});
    EXPECT_EQ(ending.output,
        R"({"command":"ping","exitStatus":0,"error":null,"address":"127.0.0.1","status":200,"answer":"OK"})"
        "\n");
}

TEST_F(PanelctlRequestsTest, PanelThatSaysNoIsStatus1)
{
    panelAnswers("busy");
    EXPECT_EQ(runAtPanel({"ping"}).output, "panelctl: 127.0.0.1 says that it is busy\n");
    panelAnswers("cast-off");
    const Ending castOff = runAtPanel({"ping"});
    EXPECT_EQ(castOff.output, "panelctl: 127.0.0.1 says that casting is off\n");
    EXPECT_EQ(castOff.status, 1);
    panelAnswers("status 500 broken");
    const Ending error = runAtPanel({"ping"});
    EXPECT_EQ(error.output, "panelctl: 127.0.0.1 answered with status 500: broken\n");
    EXPECT_EQ(error.status, 1);
}

TEST_F(PanelctlRequestsTest, OutputThatCannotBeWrittenIsStatus2AndOneLine)
{
    if (!std::filesystem::is_character_file("/dev/full"))
        GTEST_SKIP() << "there is no /dev/full";
    for (const char* arguments :
        {"ping", "ping --json", "doctor --json", "--help", "--version", "ping --help"}) {
        ChildProcess process(
            {"sh", "-c",
                std::string("exec \"$0\" ") + arguments + " --panel-address 127.0.0.1 --timeout 1 >/dev/full",
                PANELCTL},
            environment);
        const auto status = process.waitForExit();
        EXPECT_THAT(process.output(), HasSubstr("panelctl: standard output: No space left on device\n"))
            << arguments;
        EXPECT_NE(status, 0) << arguments;
        if (std::string_view(arguments) != "doctor --json") {
            EXPECT_EQ(status, 2) << arguments;
        }
    }
}

TEST_F(PanelctlRequestsTest, AnswerThatIsNotUtf8IsStatus4ForAHeartbeatOnly)
{
    panelAnswers("invalid");
    const Ending ending = runAtPanel({"ping"});
    EXPECT_EQ(ending.output, "panelctl: 127.0.0.1: the text of its answer is not UTF-8\n");
    EXPECT_EQ(ending.status, 4);
    panel->post("/simulator/reply", "trigger invalid");
    EXPECT_EQ(runAtPanel({"trigger"}).status, 0);
    panel->post("/simulator/reply", "touchback invalid");
    EXPECT_EQ(runAtPanel({"touchback", "on"}).status, 0);
}

TEST_F(PanelctlRequestsTest, SilenceEndsWithTheTimeout)
{
    panelAnswers("silence");
    const auto begin = std::chrono::steady_clock::now();
    const Ending ending = runAtPanel({"ping", "--timeout", "0.5"});
    EXPECT_EQ(ending.status, 4);
    EXPECT_THAT(ending.output, StartsWith("panelctl: 127.0.0.1: "));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 20s);
}

TEST_F(PanelctlRequestsTest, AnswerWithoutEndIsGivenUp)
{
    panelAnswers("endless");
    const Ending ending = runAtPanel({"ping", "--timeout", "1"});
    EXPECT_EQ(ending.status, 4);
    EXPECT_EQ(std::count(ending.output.begin(), ending.output.end(), '\n'), 1);
}

TEST_F(PanelctlRequestsTest, ConnectionThatIsClosedOrCutIsStatus4)
{
    for (const char* mode : {"close", "cut"}) {
        panelAnswers(mode);
        const Ending ending = runAtPanel({"ping"});
        EXPECT_EQ(ending.status, 4) << mode;
        EXPECT_THAT(ending.output, StartsWith("panelctl: 127.0.0.1: ")) << mode;
        EXPECT_EQ(std::count(ending.output.begin(), ending.output.end(), '\n'), 1) << ending.output;
    }
}

TEST_F(PanelctlRequestsTest, PortThatNobodyHasIsStatus4)
{
    for (const char* request : {"ping", "trigger"})
        EXPECT_EQ(run({request, "--panel-address", "127.0.0.9"}).status, 4) << request;
    EXPECT_EQ(run({"touchback", "on", "--panel-address", "127.0.0.9"}).status, 4);
    const Ending upload = run({"upload", PANELCTL, "--panel-address", "127.0.0.9"});
    EXPECT_EQ(upload.status, 4);
    EXPECT_THAT(upload.output, HasSubstr("127.0.0.9"));
}

TEST_F(PanelctlRequestsTest, MissingLocalAddressIsNamed)
{
    const Ending ending = runAtPanel({"ping", "--interface", "nope7"});
    EXPECT_EQ(ending.output,
        "panelctl: the network interface nope7 has no IPv4 address that a panel could be told\n");
    EXPECT_EQ(ending.status, 4);
    EXPECT_EQ(panel->state()["pings"].toObject()["count"].toInt(), 0);
    const Ending noRoute = run({"ping", "--panel-address", "10.9.8.7"});
    EXPECT_EQ(noRoute.output, "panelctl: no network interface leads to 10.9.8.7\n");
    EXPECT_EQ(noRoute.status, 4);
}

TEST_F(PanelctlRequestsTest, TouchbackIsSwitched)
{
    const Ending on = runAtPanel({"touchback", "on", "--hdmi"});
    EXPECT_EQ(on.output, "127.0.0.1 sends its touches to 127.0.0.1\n");
    EXPECT_EQ(on.status, 0);
    const QJsonObject target = panel->state()["touchTarget"].toObject();
    EXPECT_TRUE(target["enabled"].toBool());
    EXPECT_TRUE(target["isHDMI"].toBool());
    EXPECT_FALSE(target["hidemenu"].toBool());
    EXPECT_EQ(runAtPanel({"touchback", "off"}).status, 0);
    EXPECT_FALSE(panel->state()["touchTarget"].toObject()["enabled"].toBool());
    EXPECT_FALSE(panel->state()["touchTarget"].toObject()["isHDMI"].toBool());
    panelAnswers("touchback status 403");
    EXPECT_EQ(runAtPanel({"touchback", "on"}).status, 1);
}

TEST_F(PanelctlRequestsTest, TriggerIsCountedAndItsAnswerTold)
{
    panelAnswers("trigger text opening");
    const Ending ending = runAtPanel({"trigger"});
    EXPECT_EQ(ending.output, "127.0.0.1 was asked to open its receiver: opening\n");
    EXPECT_EQ(ending.status, 0);
    EXPECT_EQ(panel->state()["triggers"].toObject()["count"].toInt(), 1);
    panelAnswers("trigger status 503 no");
    EXPECT_EQ(runAtPanel({"trigger"}).status, 1);
}

TEST_F(PanelctlRequestsTest, UploadArrivesByteForByte)
{
    std::string bytes(3'000'001, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>((i * 7919) >> 3);
    const auto file = folder / "sent";
    std::filesystem::create_directory(file);
    std::ofstream(file / "Größe \"1\".png", std::ios::binary) << bytes;
    const Ending ending = runAtPanel({"upload", (file / "Größe \"1\".png").string()});
    EXPECT_EQ(ending.output, "Größe \"1\".png (3.0 MB): File Uploaded successfully.\n");
    EXPECT_EQ(ending.status, 0);

    std::ostringstream received;
    received << std::ifstream(folder / "Größe \"1\".png", std::ios::binary).rdbuf();
    EXPECT_TRUE(received.str() == bytes);
    const QJsonObject upload = panel->state()["uploads"].toObject()["list"].toArray().first().toObject();
    EXPECT_EQ(upload["filetype"].toString(), "image/png");
    EXPECT_EQ(upload["srcfilename"].toString(), "Größe \"1\".png");
}

TEST_F(PanelctlRequestsTest, UploadThatIsRefusedIsStatus1)
{
    panel->post("/simulator/upload-reply", "status 500");
    const Ending ending = runAtPanel({"upload", "/etc/passwd"});
    EXPECT_EQ(ending.output, "panelctl: 127.0.0.1 answered with status 500\n");
    EXPECT_EQ(ending.status, 1);
}

TEST_F(PanelctlRequestsTest, UploadThatIsBrokenOffIsStatus4)
{
    std::ofstream(folder / "big.bin") << std::string(20'000'000, 'b');
    panel->post("/simulator/upload-reply", "reset");
    EXPECT_EQ(runAtPanel({"upload", (folder / "big.bin").string()}).status, 4);
    panel->post("/simulator/upload-reply", "silence");
    EXPECT_EQ(runAtPanel({"upload", (folder / "big.bin").string(), "--timeout", "0.5"}).status, 4);
}

TEST_F(PanelctlRequestsTest, FileThatIsNoneIsStatus2)
{
    const Ending missing = runAtPanel({"upload", "/nonexistent/a.png"});
    EXPECT_EQ(missing.output, "panelctl: cannot send /nonexistent/a.png: No such file or directory\n");
    EXPECT_EQ(missing.status, 2);
    EXPECT_THAT(runAtPanel({"upload", "/tmp"}).output, EndsWith("it is a folder\n"));
    EXPECT_THAT(runAtPanel({"upload", "/dev/null"}).output, EndsWith("it is no regular file\n"));
    EXPECT_EQ(panel->state()["uploads"].toObject()["count"].toInt(), 0);
}

TEST_F(PanelctlRequestsTest, BadUsageIsOneLineAndStatus2)
{
    const Ending ending = run({"ping", "--no-such"});
    EXPECT_EQ(ending.output, "panelctl: unknown option '--no-such' (see --help)\n");
    EXPECT_EQ(ending.status, 2);
    EXPECT_EQ(run({}).status, 2);
    EXPECT_EQ(run({"ping"}).status, 2);
}

TEST_F(PanelctlRequestsTest, ConsoleLinesComeWithVerboseOnly)
{
    const Ending ending = runAtPanel({"ping", "--verbose"});
    EXPECT_THAT(ending.output, StartsWith("<Response http://127.0.0.1:5000/pingServerWithIP"));
    EXPECT_THAT(ending.output, HasSubstr("statusCode: 200\nPing succeeded..OK\n"));
    EXPECT_THAT(ending.output, EndsWith("127.0.0.1 answered: OK\n"));
}

TEST_F(PanelctlRequestsTest, WhatAPanelSaysDoesNothingToTheTerminal)
{
    panelAnswers("text \x1b[31mred\x07");
    const Ending ending = runAtPanel({"ping"});
    EXPECT_EQ(ending.output, "127.0.0.1 answered: \\x1b[31mred\\x07\n");
}

TEST_F(PanelctlRequestsTest, SignalEndsARequest)
{
    panelAnswers("silence");
    ChildProcess process(command({"ping", "--panel-address", "127.0.0.1", "--verbose"}), environment);
    for (int round = 0; round < 100 && panel->state()["pings"].toObject()["count"].toInt() == 0; ++round)
        usleep(50'000);
    process.sendSignal(SIGINT);
    EXPECT_EQ(process.waitForExit(), 128 + SIGINT);
}

} // namespace companion::testing
