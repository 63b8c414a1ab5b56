#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateBus.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace companion::testing {

/// A real avahi-daemon on a private bus, with a run-time folder of its own (a tmpfs in a mount namespace), so that
/// several can run at once. Daemons on the same interface hear each other: see `enterNetworkNamespace`.
class AvahiDaemon {
public:
    struct Options {
        std::string hostName = "panel"; ///< two daemons that hear each other need different ones
        std::string interface = "lo";
        bool useIpv4 = true;
        bool useIpv6 = false;
        /// One that only listens cannot quarrel with another about whose the addresses of their common interface are.
        bool publishes = true;
        unsigned objectsPerClient = 1024; ///< the daemon's own default
        unsigned entriesPerGroup = 32;    ///< the daemon's own default
    };

    /// Why it cannot run here, for a test to skip with; nothing when it can.
    static std::optional<std::string> reasonNotToRun();

    explicit AvahiDaemon(const PrivateBus& bus);
    AvahiDaemon(const PrivateBus& bus, Options options);
    ~AvahiDaemon();
    AvahiDaemon(const AvahiDaemon&) = delete;
    AvahiDaemon& operator=(const AvahiDaemon&) = delete;

    /// Returns once it has its host name and answers on the bus, which has to run. Throws when it does not.
    void start();
    /// Says goodbye to the network for all that is published, then ends.
    void stop();
    /// Ends without a word to the network.
    void crash();
    /// Stops replying until `resume`.
    void pause();
    void resume();

private:
    const PrivateBus& m_bus;
    Options m_options;
    std::unique_ptr<ChildProcess> m_daemon;
};

/// A service announced through the daemon of a bus by avahi-publish, until the object goes.
class Announcement {
public:
    /// `host`: the host that it points to, which need not exist; "" is the daemon's own. Returns once it is
    /// established. Throws when it is not.
    Announcement(const PrivateBus& bus, const std::string& name, const std::string& type = "_airplay._tcp",
        const std::string& host = "");

private:
    ChildProcess m_publisher;
};

/// The address of a host name, for example "late.local", announced until the object goes.
class HostAnnouncement {
public:
    HostAnnouncement(const PrivateBus& bus, const std::string& host, const std::string& address);

private:
    ChildProcess m_publisher;
};

} // namespace companion::testing
