#include "tests/support/XvfbServer.h"

#include <csignal>
#include <regex>
#include <stdexcept>

namespace companion::testing {

XvfbServer::XvfbServer(const std::string& geometry)
    : m_server(std::make_unique<ChildProcess>(std::vector<std::string>{
        "Xvfb", "-displayfd", "1", "-screen", "0", geometry + "x24", "-nolisten", "tcp", "-noreset", "-ac"}))
{
    // The server prints its display number and a line end once it takes connections; warnings of its keyboard
    // compiler may come before.
    const std::regex numberLine("(^|\n)([0-9]+)\n");
    std::smatch match;
    while (!std::regex_search(m_server->output(), match, numberLine)) {
        const std::size_t before = m_server->output().size();
        if (m_server->waitForExit(std::chrono::milliseconds(20)) && m_server->output().size() == before)
            throw std::runtime_error("Xvfb did not start: " + m_server->output());
    }
    m_display = ":" + match[2].str();
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
