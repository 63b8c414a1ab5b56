#pragma once

#include <chrono>
#include <cstdint>

namespace companion {

/// What the kernel knows of a connection's traffic.
struct TcpActivity {
    std::uint64_t bytes = 0; ///< Received, and sent and acknowledged, since the connection was made.
    std::chrono::milliseconds sinceLast{}; ///< Since something last came in, an acknowledgement included.
};

/// All zero for what is no TCP socket. Any thread.
TcpActivity tcpActivity(int socket);

} // namespace companion
