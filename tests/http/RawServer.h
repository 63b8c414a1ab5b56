#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace companion::testing {

/// One connection of a `RawServer`, seen from the server's side, byte by byte.
class RawConnection {
public:
    explicit RawConnection(int socket)
        : m_socket(socket)
    {
    }

    /// Reads one request: the header section and as many bytes as its Content-Length tells.
    std::string readRequest();

    /// Reads the header section only, and possibly some of what follows.
    std::string readHead();

    /// Reads until the client closes or nothing has come for `silence`.
    std::string readRest(std::chrono::milliseconds silence);

    /// Reads once, up to 64 KiB.
    std::string readOnce();

    /// Reads the next byte; false when none comes for ten seconds.
    bool readByte();

    /// False when the client has closed.
    bool write(std::string_view bytes);

    /// Waits for the client to close; false when it has not when the time is over.
    bool waitForClose(std::chrono::milliseconds timeout = std::chrono::seconds(10));

    /// Closes the server's half, or everything with a reset.
    void finishWriting();
    void reset();

private:
    bool readSome(std::string& into, std::chrono::milliseconds timeout);

    const int m_socket;
};

/// A TCP server on a free loopback port that runs the given function for each connection, each in a thread of its
/// own; the connection is closed when the function returns.
class RawServer {
public:
    using Handler = std::function<void(RawConnection&)>;

    /// With a `receiveBuffer`, connections take no more than about so many bytes ahead.
    explicit RawServer(Handler handler, int receiveBuffer = 0);
    ~RawServer();
    RawServer(const RawServer&) = delete;
    RawServer& operator=(const RawServer&) = delete;

    std::uint16_t port() const { return m_port; }
    std::string url(const std::string& path = "/") const;
    int connections() const { return m_connections; }

private:
    void acceptConnections();
    void serve(int socket);

    const Handler m_handler;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    std::atomic<int> m_connections = 0;
    std::atomic<bool> m_isStopping = false;
    std::mutex m_mutex;
    std::list<int> m_sockets;
    std::list<std::thread> m_threads;
    std::thread m_acceptor;
};

} // namespace companion::testing
