#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

namespace companion::testing {

/// A UDP socket on a free port of 127.0.0.1, as the computer that touches go to.
class TouchListener {
public:
    struct Datagram {
        std::string bytes;
        std::string from; ///< dotted IPv4 text
        std::chrono::steady_clock::time_point time;
    };

    TouchListener();
    ~TouchListener();
    TouchListener(const TouchListener&) = delete;
    TouchListener& operator=(const TouchListener&) = delete;

    std::string port() const;
    std::optional<Datagram> receive(std::chrono::milliseconds time = std::chrono::seconds(10));

private:
    int m_fd = -1;
};

} // namespace companion::testing
