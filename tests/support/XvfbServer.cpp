#include "tests/support/XvfbServer.h"

#include <csignal>
#include <regex>
#include <stdexcept>
#include <unistd.h>

namespace companion::testing {

namespace {

/// Servers that choose by themselves begin at 0, and would take the number of one that is stopped for a while.
std::string ownDisplay()
{
    static int count = 0;
    return ":" + std::to_string(1000 + (getpid() + 7919 * count++) % 50'000);
}

} // namespace

XvfbServer::XvfbServer(const std::string& geometry)
    : m_geometry(geometry)
    , m_display(ownDisplay())
{
    startAgain();
}

void XvfbServer::startAgain()
{
    m_server = std::make_unique<ChildProcess>(std::vector<std::string>{"Xvfb", m_display, "-displayfd", "1",
        "-screen", "0", m_geometry + "x24", "-nolisten", "tcp", "-noreset", "-ac"});
    // The server prints its display number and a line end once it takes connections; warnings of its keyboard
    // compiler may come before.
    const std::regex numberLine("(^|\n)[0-9]+\n");
    while (!std::regex_search(m_server->output(), numberLine)) {
        const std::size_t before = m_server->output().size();
        if (m_server->waitForExit(std::chrono::milliseconds(20)) && m_server->output().size() == before)
            throw std::runtime_error("Xvfb did not start: " + m_server->output());
    }
}

void XvfbServer::pause()
{
    m_server->sendSignal(SIGSTOP);
}

void XvfbServer::resume()
{
    m_server->sendSignal(SIGCONT);
}

void XvfbServer::stop()
{
    m_server.reset();
}

} // namespace companion::testing
