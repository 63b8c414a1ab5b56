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

class FakeMdnsDaemon : public MdnsDaemon {
public:
    MdnsDaemonFacts look(std::chrono::milliseconds) override { return facts; }

    MdnsDaemonFacts facts{MdnsDaemonState::running, "avahi 0.8"};
};

class FakeUdpPortHolder : public UdpPortHolder {
public:
    std::vector<PortHolder> holdersOf(std::uint16_t) const override { return holders; }

    std::vector<PortHolder> holders;
};

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

    PanelSearch search() { return {browsers, daemon, queue}; }
    PanelRequestHost host() { return {session, addresses, rule, console}; }

    /// "1 192.168.1.20 says that it is busy", "none yet".
    std::string resultText() const
    {
        return result ? std::to_string(static_cast<int>(result->status)) + " " + result->text : "none yet";
    }

    Transcript transcript;
    FakeMainQueue queue;
    FakeServiceBrowserFactory browsers{transcript};
    FakeMdnsDaemon daemon;
    FakeHttpSession inner;
    ObservedHttpSession session{inner};
    FakeInterfaceAddresses addresses;
    FakeInterfaceNameRule rule;
    FakeConsole console{transcript};
    FakeAsyncUdpSocketFactory sockets{transcript};
    FakeUdpPortHolder portHolder;
    FakeOutput output;
    std::chrono::steady_clock::time_point now{1'000'003us};
    std::optional<Result> result;
};

} // namespace companion::cli::testing
