#include "tests/support/AvahiDaemon.h"

#include "tests/support/NetworkNamespace.h"

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace companion::testing {

namespace {

// The daemon's paths are fixed at its build, so they are private to its mount namespace. It gives its folder to the
// user "avahi", who in the user namespace of somebody other than root has to be 0, the only user there.
constexpr auto startScript = R"(set -e
mkdir -p /run/avahi-daemon 2>/dev/null || { mount -t tmpfs tmpfs /run; mkdir /run/avahi-daemon; }
mount -t tmpfs tmpfs /run/avahi-daemon
for f in passwd group; do
  sed -E 's/^(avahi):x:[0-9]+/\1:x:0/' /etc/$f > /run/avahi-daemon/$f
  mount --bind /run/avahi-daemon/$f /etc/$f
done
exec "$@")";

std::vector<std::string> inOwnRunFolder(std::vector<std::string> command)
{
    std::vector<std::string> whole{"unshare", "--mount", "sh", "-c", startScript, "sh"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

std::string yesOrNo(bool value)
{
    return value ? "yes" : "no";
}

std::vector<std::string> publishCommand(
    const std::string& name, const std::string& type, const std::string& host)
{
    std::vector<std::string> command{"avahi-publish", "-s"};
    if (!host.empty())
        command.push_back("--host=" + host);
    command.insert(command.end(), {"--", name, type, "7000"});
    return command;
}

void waitUntilEstablished(ChildProcess& publisher)
{
    if (!publisher.waitForOutput("Established"))
        throw std::runtime_error("not announced: " + publisher.output());
}

} // namespace

std::optional<std::string> AvahiDaemon::reasonNotToRun()
{
    for (const char* program : {"dbus-daemon", "avahi-daemon", "avahi-publish", "unshare"})
        if (!isInstalled(program))
            return std::string(program) + " is not installed";
    ChildProcess trial(inOwnRunFolder({"true"}));
    if (trial.waitForExit() != 0)
        return "no mount namespace: " + firstLine(trial.output()) + namespaceRemedy();
    return std::nullopt;
}

AvahiDaemon::AvahiDaemon(const PrivateBus& bus)
    : AvahiDaemon(bus, Options())
{
}

AvahiDaemon::AvahiDaemon(const PrivateBus& bus, Options options)
    : m_bus(bus)
    , m_options(std::move(options))
{
}

AvahiDaemon::~AvahiDaemon() = default;

void AvahiDaemon::start()
{
    if (m_daemon)
        return;
    const auto configuration = m_bus.folder() / (m_options.hostName + ".conf");
    std::ofstream(configuration) << "[server]\nhost-name=" << m_options.hostName
                                 << "\nuse-ipv4=" << yesOrNo(m_options.useIpv4)
                                 << "\nuse-ipv6=" << yesOrNo(m_options.useIpv6) << "\nallow-interfaces="
                                 << m_options.interface << "\nenable-dbus=yes\nobjects-per-client-max="
                                 << m_options.objectsPerClient
                                 << "\nentries-per-entry-group-max=" << m_options.entriesPerGroup
                                 << "\n[publish]\ndisable-publishing=" << yesOrNo(!m_options.publishes)
                                 << "\npublish-hinfo=no\npublish-workstation=no\n";
    m_daemon = std::make_unique<ChildProcess>(
        inOwnRunFolder({"avahi-daemon", "--file=" + configuration.string(), "--no-drop-root", "--no-chroot",
            "--no-rlimits", "--no-proc-title"}),
        m_bus.environment());
    if (!m_daemon->waitForOutput("Server startup complete"))
        throw std::runtime_error("avahi-daemon did not start: " + m_daemon->output());
}

void AvahiDaemon::stop()
{
    m_daemon.reset();
}

void AvahiDaemon::crash()
{
    m_daemon->sendSignal(SIGKILL);
    m_daemon.reset();
}

void AvahiDaemon::pause()
{
    m_daemon->sendSignal(SIGSTOP);
}

void AvahiDaemon::resume()
{
    m_daemon->sendSignal(SIGCONT);
}

Announcement::Announcement(
    const PrivateBus& bus, const std::string& name, const std::string& type, const std::string& host)
    : m_publisher(publishCommand(name, type, host), bus.environment())
{
    waitUntilEstablished(m_publisher);
}

HostAnnouncement::HostAnnouncement(const PrivateBus& bus, const std::string& host, const std::string& address)
    : m_publisher({"avahi-publish", "-a", "--no-reverse", "--", host, address}, bus.environment())
{
    waitUntilEstablished(m_publisher);
}

} // namespace companion::testing
