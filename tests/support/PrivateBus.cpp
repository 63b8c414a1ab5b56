#include "tests/support/PrivateBus.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace companion::testing {

namespace {

std::filesystem::path makeFolder()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "private-bus-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        throw std::runtime_error("no folder for the bus");
    return pattern;
}

constexpr auto configuration =
    R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>system</type>
  <listen>@ADDRESS@</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_type="method_call"/>
    <allow send_type="signal"/>
    <allow send_requested_reply="true" send_type="method_return"/>
    <allow send_requested_reply="true" send_type="error"/>
    <allow receive_type="method_call"/>
    <allow receive_type="method_return"/>
    <allow receive_type="error"/>
    <allow receive_type="signal"/>
  </policy>
</busconfig>
)";

} // namespace

PrivateBus::PrivateBus()
    : m_folder(makeFolder())
{
    std::string text = configuration;
    const std::string placeholder = "@ADDRESS@";
    text.replace(text.find(placeholder), placeholder.size(), address());
    std::ofstream(m_folder / "bus.conf") << text;
}

PrivateBus::~PrivateBus()
{
    stop();
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

void PrivateBus::start()
{
    if (m_daemon)
        return;
    m_daemon = std::make_unique<ChildProcess>(std::vector<std::string>{"dbus-daemon",
        "--config-file=" + (m_folder / "bus.conf").string(), "--nofork", "--nopidfile", "--print-address"});
    if (!m_daemon->waitForOutput("unix:path="))
        throw std::runtime_error("dbus-daemon did not start: " + m_daemon->output());
}

void PrivateBus::stop()
{
    m_daemon.reset();
    std::error_code ignored;
    std::filesystem::remove(m_folder / "bus", ignored);
}

void PrivateBus::pause()
{
    m_daemon->sendSignal(SIGSTOP);
}

void PrivateBus::resume()
{
    m_daemon->sendSignal(SIGCONT);
}

std::string PrivateBus::address() const
{
    return "unix:path=" + (m_folder / "bus").string();
}

} // namespace companion::testing
