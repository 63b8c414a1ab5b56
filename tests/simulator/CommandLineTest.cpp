#include "tests/simulator/SimulatorProcess.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <memory>

namespace companion::testing {
namespace {

using namespace std::chrono_literals;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct Ending {
    std::optional<int> status;
    std::string output;
};

Ending run(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), PANEL_SIMULATOR);
    ChildProcess process(arguments);
    const auto status = process.waitForExit();
    return {status, process.output()};
}

TEST(CommandLineTest, BadUsageIsOneLineAndStatus2)
{
    const Ending ending = run({"--service-port", "65536"});
    EXPECT_EQ(ending.status, 2);
    EXPECT_EQ(ending.output, "panel-simulator: --service-port needs a number from 0 to 65535\n");
}

TEST(CommandLineTest, VersionAndHelpAreStatus0)
{
    EXPECT_EQ(run({"--version"}).status, 0);
    EXPECT_THAT(run({"--version"}).output, StartsWith("panel-simulator "));
    EXPECT_EQ(run({"--help"}).status, 0);
    EXPECT_THAT(run({"--help"}).output, HasSubstr("--touch-port"));
}

TEST(CommandLineTest, TakenPortIsOneLineAndStatus1)
{
    SimulatorProcess first;
    const std::string port = std::to_string(first.servicePort());
    const Ending second = run({"--no-announce", "--address", "127.0.0.1", "--service-port", port});
    EXPECT_EQ(second.status, 1);
    EXPECT_EQ(
        second.output, "panel-simulator: cannot listen on 127.0.0.1:" + port + ": Address already in use\n");
}

TEST(CommandLineTest, TakenUploadPortIsOneLineAndStatus1)
{
    SimulatorProcess first;
    const Ending second = run({"--no-announce", "--address", "127.0.0.1", "--service-port", "0",
        "--upload-port", std::to_string(first.uploadPort())});
    EXPECT_EQ(second.status, 1);
    EXPECT_THAT(second.output, StartsWith("panel-simulator: cannot listen on 127.0.0.1:"));
}

TEST(CommandLineTest, TwoAddressesShareOnePort)
{
    SimulatorProcess first;
    const std::string port = std::to_string(first.servicePort());
    SimulatorProcess second({"--no-announce", "--service-port", port}, "127.0.0.2");
    EXPECT_EQ(second.servicePort(), first.servicePort());
    EXPECT_EQ(first.ping().body, "OK");
    EXPECT_EQ(second.state()["address"].toString(), "127.0.0.2");
    EXPECT_EQ(first.state()["address"].toString(), "127.0.0.1");
}

TEST(CommandLineTest, AddressOfAnotherComputerIsOneLineAndStatus1)
{
    const Ending ending = run({"--no-announce", "--address", "192.0.2.77", "--service-port", "0"});
    EXPECT_EQ(ending.status, 1);
    EXPECT_EQ(std::count(ending.output.begin(), ending.output.end(), '\n'), 1);
}

TEST(CommandLineTest, FolderThatCannotBeMadeIsOneLineAndStatus1)
{
    const Ending ending = run({"--no-announce", "--address", "127.0.0.1", "--uploads", "/proc/nothing/here"});
    EXPECT_EQ(ending.status, 1);
    EXPECT_THAT(ending.output, StartsWith("panel-simulator: cannot keep uploads in /proc/nothing/here"));
}

TEST(CommandLineTest, ReadyLineTellsWhatIsAnnouncedAndWhere)
{
    SimulatorProcess panel({"--no-announce", "--model", "Tandem", "--name", "Room"});
    EXPECT_EQ(panel.process().output(),
        "panel-simulator: Tandem|Room|7F000001 on 127.0.0.1:" + std::to_string(panel.servicePort())
            + ", uploads on " + std::to_string(panel.uploadPort()) + "\n");
}

TEST(CommandLineTest, SignalsEndItWithStatus0DuringASilence)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SimulatorProcess panel;
        panel.post("/simulator/reply", "silence");
        HttpClient client(panel.address(), panel.servicePort());
        client.send(httpRequest("GET", "/pingServerWithIP?ip=127.0.0.1&msg=ping"));
        ASSERT_TRUE(panel.process().waitForOutput("ping from"));
        panel.process().sendSignal(signal);
        EXPECT_EQ(panel.process().waitForExit(), 0);
        EXPECT_TRUE(client.receive().isClosed);
    }
}

TEST(CommandLineTest, SignalEndsItWithinTwoSecondsWithAnswersPending)
{
    SimulatorProcess panel({"--no-announce", "--touch-port", "9"});
    panel.get("/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true");
    panel.post("/simulator/upload-reply", "slow");
    panel.post("/simulator/reply", "trigger endless");
    panel.post("/simulator/reply", "touchback silence");
    panel.post("/simulator/reply", "delay 3600000");
    const std::vector<std::string> requests{httpRequest("POST", "/ws", R"({"key":"ACTION_CAST"})"),
        httpRequest("GET", "/enableWifiTouchback?ip=127.0.0.1&enable=true&hidemenu=false&isHDMI=true"),
        httpRequest("GET", "/pingServerWithIP?ip=127.0.0.1&msg=ping"),
        httpRequest("POST", "/simulator/touch", "UP 1 1 60000"),
        httpRequest("POST", "/simulator/stroke?id=s&part=1", "UP 1 1")};
    std::vector<std::unique_ptr<HttpClient>> clients;
    for (const std::string& request : requests) {
        clients.push_back(std::make_unique<HttpClient>(panel.address(), panel.servicePort()));
        clients.back()->send(request);
    }
    HttpClient upload(panel.address(), panel.uploadPort());
    upload.send(httpRequest(
        "POST", "/uploadfile", std::string(5000, 'x'), "Content-Type: multipart/form-data; boundary=b\r\n"));
    ASSERT_TRUE(panel.process().waitForOutput("ping from"));
    EXPECT_EQ(clients[3]->receive(100ms).status, 0);
    const auto begin = std::chrono::steady_clock::now();
    panel.process().sendSignal(SIGTERM);
    EXPECT_EQ(panel.process().waitForExit(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 2s);
}

} // namespace
} // namespace companion::testing
