#pragma once

#include "cli/Command.h"
#include "cli/ObservedHttpSession.h"
#include "cli/PanelFinder.h"
#include "cli/Probes.h"
#include "cli/testing/FakeOutput.h"
#include "panel/PanelService.h"
#include "platform/testing/FakeAsyncUdpSocket.h"
#include "platform/testing/FakeHttpSession.h"
#include "platform/testing/FakeInterfaceAddresses.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/FakeServiceBrowser.h"

#include <gmock/gmock.h>

namespace companion::cli::testing {

using namespace companion::testing;
using namespace std::chrono_literals;

/// A computer and a network that exist only in the test, and what came of the command.
class CommandTest : public ::testing::Test {
protected:
    void start(Command& command)
    {
        command.start([this](Result told) {
            EXPECT_FALSE(result) << "told twice";
            result = std::move(told);
        });
    }

    PanelSearch search() { return {browsers, probes, queue}; }
    PanelRequestHost host() { return {session, addresses, rule, console}; }

    /// "1 192.168.1.20 says that it is busy", "none yet".
    std::string resultText() const
    {
        return result ? std::to_string(static_cast<int>(result->status)) + " " + result->text : "none yet";
    }

    Transcript transcript;
    FakeMainQueue queue;
    FakeServiceBrowserFactory browsers{transcript};
    MdnsDaemonFacts daemon{MdnsDaemonState::running, "avahi 0.8"};
    std::vector<PortHolder> portHolders;
    std::string tcpError;
    const Probes probes{[this](auto) { return daemon; }, [this](auto) { return portHolders; },
        [this](const auto& panels, const auto& ports, auto) {
            std::vector<PortAnswer> answers;
            for (const std::string& address : panels)
                for (const std::uint16_t port : ports)
                    answers.push_back({address, port, tcpError});
            return answers;
        },
        [](auto) {
            return DisplayFacts{DisplayFacts::X::usable, ":1", ""};
        }};
    FakeHttpSession inner;
    ObservedHttpSession session{inner};
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule rule;
    FakeConsole console{transcript};
    FakeAsyncUdpSocketFactory sockets{transcript};
    FakeOutput output;
    std::chrono::steady_clock::time_point now{1'000'003us};
    std::optional<Result> result;
};

} // namespace companion::cli::testing
