#pragma once

#include <chrono>
#include <cstdint>

namespace companion {

/// What the kernel knows of a connection's traffic.
struct TcpActivity {
    std::uint64_t bytes = 0; ///< Received, and sent and acknowledged, since the connection was made.
    std::chrono::milliseconds sinceLast{}; ///< Since something last came in, an acknowledgement included.
    /// Bytes wait here since the other side has no room for more, which its system says whenever it is asked.
    bool isHeldBack = false;
};

/// All zero, and false, for what is no TCP socket. Any thread.
TcpActivity tcpActivity(int socket);

} // namespace companion
