#include "tests/panelctl/PanelctlTest.h"

#include <cstdlib>

namespace companion::testing {

std::optional<std::string> reasonForNoNetwork;

QJsonObject Ending::json() const
{
    const std::size_t begin = output.find("{\"command\"");
    if (begin == std::string::npos)
        return {};
    const std::string line = output.substr(begin, output.find('\n', begin) - begin);
    return QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
}

PanelctlTest::PanelctlTest()
    : environment{
        {"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"}, {"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}}
{
    std::string name = std::filesystem::temp_directory_path() / "panelctl-test-XXXXXX";
    folder = mkdtemp(name.data());
}

PanelctlTest::~PanelctlTest()
{
    std::filesystem::remove_all(folder);
}

void PanelctlTest::SetUp()
{
    if (reasonForNoNetwork)
        GTEST_SKIP() << *reasonForNoNetwork;
}

void PanelctlTest::startPanel(
    std::vector<std::string> more, const std::map<std::string, std::string>& panelEnvironment)
{
    const std::vector<std::string> fixed{
        "--service-port", "5000", "--upload-port", "5505", "--uploads", folder.string()};
    more.insert(more.end(), fixed.begin(), fixed.end());
    panel = std::make_unique<SimulatorProcess>(more, "127.0.0.1", panelEnvironment);
}

std::vector<std::string> PanelctlTest::command(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), PANELCTL);
    return arguments;
}

Ending PanelctlTest::run(std::vector<std::string> arguments) const
{
    ChildProcess process(command(std::move(arguments)), environment);
    const auto status = process.waitForExit(std::chrono::seconds(30));
    return {status, process.output()};
}

Ending PanelctlTest::runAtPanel(std::vector<std::string> arguments) const
{
    arguments.insert(arguments.end(), {"--panel-address", "127.0.0.1"});
    return run(std::move(arguments));
}

} // namespace companion::testing
