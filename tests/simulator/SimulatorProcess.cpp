#include "tests/simulator/SimulatorProcess.h"

#include <QJsonDocument>

#include <regex>
#include <stdexcept>

namespace companion::testing {

namespace {

std::vector<std::string> command(const std::string& address, const std::vector<std::string>& more)
{
    std::vector<std::string> whole{
        PANEL_SIMULATOR, "--address", address, "--service-port", "0", "--upload-port", "0"};
    whole.insert(whole.end(), more.begin(), more.end());
    return whole;
}

} // namespace

SimulatorProcess::SimulatorProcess(const std::vector<std::string>& more, const std::string& address,
    const std::map<std::string, std::string>& environment)
    : m_address(address)
    , m_process(command(address, more), environment)
{
    const std::regex readyLine("on [0-9.]+:([0-9]+), uploads on ([0-9]+)\n");
    std::smatch match;
    if (!m_process.waitForOutput(", uploads on ") || !m_process.waitForOutput("\n")
        || !std::regex_search(m_process.output(), match, readyLine))
        throw std::runtime_error("the simulator did not start: " + m_process.output());
    m_servicePort = static_cast<std::uint16_t>(std::stoi(match[1]));
    m_uploadPort = static_cast<std::uint16_t>(std::stoi(match[2]));
}

HttpReply SimulatorProcess::get(const std::string& target) const
{
    HttpClient client(m_address, m_servicePort);
    client.send(httpRequest("GET", target));
    return client.receive();
}

HttpReply SimulatorProcess::post(const std::string& target, const std::string& body) const
{
    HttpClient client(m_address, m_servicePort);
    client.send(httpRequest("POST", target, body));
    return client.receive();
}

QJsonObject SimulatorProcess::state() const
{
    return QJsonDocument::fromJson(QByteArray::fromStdString(get("/simulator/state").body)).object();
}

} // namespace companion::testing
