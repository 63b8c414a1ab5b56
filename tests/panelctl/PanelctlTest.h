#pragma once

#include "tests/simulator/SimulatorProcess.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace companion::testing {

/// Why there is no network of the tests' own, in which the panel's fixed ports are free; set before the tests.
extern std::optional<std::string> reasonForNoNetwork;

/// What a run of panelctl came to; the output is that of both streams, as it came.
struct Ending {
    std::optional<int> status;
    std::string output;

    /// The JSON object on the line that begins with one.
    QJsonObject json() const;
};

/// A simulated panel at its real ports on 127.0.0.1, and panelctl without a bus or a display unless they are given.
class PanelctlTest : public ::testing::Test {
protected:
    PanelctlTest();
    ~PanelctlTest() override;
    void SetUp() override;

    void startPanel(std::vector<std::string> more = {"--no-announce"},
        const std::map<std::string, std::string>& environment = {});

    /// `answer` is a mode of the simulated panel.
    void panelAnswers(const std::string& answer) const { panel->post("/simulator/reply", answer); }

    static std::vector<std::string> command(std::vector<std::string> arguments);
    Ending run(std::vector<std::string> arguments) const;

    /// The same with the panel's address.
    Ending runAtPanel(std::vector<std::string> arguments) const;

    std::map<std::string, std::string> environment;
    std::filesystem::path folder;
    std::unique_ptr<SimulatorProcess> panel;
};

} // namespace companion::testing
