#include "bench/touch-path/MoveSender.h"

#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <vector>

namespace companion::bench {

namespace {

class Socket {
public:
    Socket(int type, std::uint16_t port)
        : m_fd(socket(AF_INET, type, 0))
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(port);
        if (connect(m_fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot connect to port " + std::to_string(port));
    }
    ~Socket() { close(m_fd); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    void write(const void* data, std::size_t size)
    {
        if (send(m_fd, data, size, MSG_NOSIGNAL) != static_cast<ssize_t>(size))
            throw std::runtime_error("cannot send");
    }

    std::vector<unsigned char> read(std::size_t size)
    {
        std::vector<unsigned char> data(size);
        if (recv(m_fd, data.data(), size, MSG_WAITALL) != static_cast<ssize_t>(size))
            throw std::runtime_error("the server sends too little");
        return data;
    }

    void sendAtOnce()
    {
        const int on = 1;
        setsockopt(m_fd, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    }

private:
    int m_fd;
};

class TouchSender : public MoveSender {
public:
    explicit TouchSender(std::uint16_t port)
        : m_socket(SOCK_DGRAM, port)
    {
    }

    void send(int x, int y) override
    {
        char record[64];
        const int length =
            std::snprintf(record, sizeof record, "MOVE,%.3f,%.3f,0", x * 32767.0 / 1280, y * 32767.0 / 800);
        m_socket.write(record, static_cast<std::size_t>(length));
    }

private:
    Socket m_socket;
};

class RfbSender : public MoveSender {
public:
    explicit RfbSender(std::uint16_t port)
        : m_socket(SOCK_STREAM, port)
    {
        m_socket.sendAtOnce();
        shakeHands();
    }

    void send(int x, int y) override
    {
        const auto byte = [](int value) { return static_cast<unsigned char>(value & 0xff); };
        const std::array<unsigned char, 6> pointerEvent{5, 0, byte(x >> 8), byte(x), byte(y >> 8), byte(y)};
        m_socket.write(pointerEvent.data(), pointerEvent.size());
    }

private:
    void shakeHands()
    {
        m_socket.read(12);
        m_socket.write("RFB 003.008\n", 12);
        const std::size_t securityTypes = m_socket.read(1)[0];
        m_socket.read(securityTypes);
        const unsigned char none = 1;
        m_socket.write(&none, 1);
        if (m_socket.read(4)[3] != 0)
            throw std::runtime_error("the server refuses security type None");
        const unsigned char shared = 1;
        m_socket.write(&shared, 1);
        const auto init = m_socket.read(24);
        m_socket.read(static_cast<std::size_t>(init[22] << 8 | init[23]));
    }

    Socket m_socket;
};

} // namespace

std::unique_ptr<MoveSender> makeTouchSender(std::uint16_t port)
{
    return std::make_unique<TouchSender>(port);
}

std::unique_ptr<MoveSender> makeRfbSender(std::uint16_t port)
{
    return std::make_unique<RfbSender>(port);
}

} // namespace companion::bench
