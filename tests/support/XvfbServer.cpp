#include "tests/support/XvfbServer.h"

#include <csignal>
#include <regex>
#include <stdexcept>

namespace companion::testing {

XvfbServer::XvfbServer(const std::string& geometry)
    : m_geometry(geometry)
{
    start({"Xvfb"});
}

void XvfbServer::startAgain()
{
    start({"Xvfb", m_display});
}

void XvfbServer::start(std::vector<std::string> arguments)
{
    const std::vector<std::string> options{
        "-displayfd", "1", "-screen", "0", m_geometry + "x24", "-nolisten", "tcp", "-noreset", "-ac"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    m_server = std::make_unique<ChildProcess>(std::move(arguments));
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
