#pragma once

#include "tests/simulator/HttpClient.h"
#include "tests/support/ChildProcess.h"

#include <QJsonObject>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace companion::testing {

/// A panel-simulator that runs, on ports of its own choice. Throws when it does not start.
class SimulatorProcess {
public:
    explicit SimulatorProcess(const std::vector<std::string>& more = {"--no-announce"},
        const std::string& address = "127.0.0.1", const std::map<std::string, std::string>& environment = {});

    ChildProcess& process() { return m_process; }
    const std::string& address() const { return m_address; }
    std::uint16_t servicePort() const { return m_servicePort; }
    std::uint16_t uploadPort() const { return m_uploadPort; }

    /// One request on a connection of its own to the service port.
    HttpReply get(const std::string& target) const;
    HttpReply post(const std::string& target, const std::string& body) const;
    HttpReply ping() const { return get("/pingServerWithIP?ip=127.0.0.1&msg=ping"); }

    /// `GET /simulator/state`; empty when that is no JSON object.
    QJsonObject state() const;

private:
    std::string m_address;
    ChildProcess m_process;
    std::uint16_t m_servicePort = 0;
    std::uint16_t m_uploadPort = 0;
};

} // namespace companion::testing
