#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace companion::bench {

/// Asks a program to move the pointer, over the network, in that program's own protocol.
class MoveSender {
public:
    virtual ~MoveSender() = default;

    /// To a pixel of the screen, which is 1280 × 800.
    virtual void send(int x, int y) = 0;
};

/// A touch record for each move, as one UDP datagram to this port of loopback.
std::unique_ptr<MoveSender> makeTouchSender(std::uint16_t port);

/// A PointerEvent for each move (RFC 6143, section 7.5.5), over TCP to this port of loopback, with no button held.
/// Throws std::runtime_error when the server does not take it.
std::unique_ptr<MoveSender> makeRfbSender(std::uint16_t port);

} // namespace companion::bench
