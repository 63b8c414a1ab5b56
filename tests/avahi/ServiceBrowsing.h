#pragma once

#include "platform/avahi/AvahiServiceBrowser.h"
#include "platform/testing/FakeLog.h"
#include "platform/testing/FakeMainQueue.h"
#include "platform/testing/Transcript.h"
#include "tests/support/AvahiDaemon.h"
#include "tests/support/PrivateBus.h"

#include <chrono>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace companion::testing {

/// Why tests that need a network of their own cannot run; set by `main`.
extern std::optional<std::string> reasonForNoNetwork;

/// The bus that DBUS_SYSTEM_BUS_ADDRESS of this process names; libdbus reads that once, so it is one for all tests.
extern PrivateBus* computerBus;

/// Does with services what the list of panels does: holds what is found, resolves it, and lets go what is removed.
/// The transcript says "found NAME", "resolved NAME", "removed NAME".
class ServiceList : public ServiceBrowserDelegate, public ServiceDelegate {
public:
    explicit ServiceList(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void netServiceBrowserDidFindService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceBrowserDidRemoveService(std::shared_ptr<Service> service, bool moreComing) override;
    void netServiceDidResolveAddress(Service& service) override;

    std::vector<std::shared_ptr<Service>> services;
    std::chrono::milliseconds resolveTimeout = std::chrono::seconds(20);
    bool moreComing = false; ///< as last reported

private:
    Transcript& m_transcript;
};

/// A browser on the computer's bus, whose main queue the test runs.
class ServiceBrowsing : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void browse();

    /// Runs the event loop and the main queue until `condition` holds; tells whether it did in time.
    bool waitUntil(
        const std::function<bool()>& condition, std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// Waits for a line of the transcript.
    bool waitFor(const std::string& line, std::chrono::milliseconds timeout = std::chrono::seconds(10));
    bool hasHappened(const std::string& line) const;

    void run(std::chrono::milliseconds duration);

    /// Runs the event loop only, as the toolkit does while an alert is open.
    void runBlocked(std::chrono::milliseconds duration);

    FakeMainQueue queue;
    Transcript logLines;
    FakeSystemLog log{logLines};
    Transcript transcript;
    ServiceList list{transcript};
    std::unique_ptr<AvahiServiceBrowser> browser;
};

} // namespace companion::testing
