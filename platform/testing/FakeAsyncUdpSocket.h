#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/testing/Transcript.h"

#include <vector>

namespace companion::testing {

/// Makes sockets that only write a transcript ("make client udp socket", "bind 41863", "close", "destroy") and
/// deliver what the test hands in. Bound ports are exclusive, as on a real computer.
class FakeAsyncUdpSocketFactory : public AsyncUdpSocketFactory {
public:
    explicit FakeAsyncUdpSocketFactory(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    std::unique_ptr<AsyncUdpSocket> makeSocket(
        AsyncUdpSocketDelegate& delegate, const std::string& queueLabel) override
    {
        m_transcript.add("make " + queueLabel);
        auto socket = std::make_unique<Socket>(*this, delegate);
        m_sockets.push_back(socket.get());
        return socket;
    }

    /// What the next sockets answer; nothing is success.
    std::optional<std::string> broadcastError;
    std::optional<std::string> bindError;
    std::optional<std::string> receiveError;

    std::uint16_t connectedPort = 0;

    std::size_t openSockets() const { return m_sockets.size(); }

    /// Delivers a datagram to the socket that is receiving, if there is one; tells whether there was.
    bool deliver(std::string_view data, const UdpSender& from = {"192.168.1.20", 50000})
    {
        for (Socket* socket : m_sockets) {
            if (socket->isReceiving()) {
                socket->deliver(data, from);
                return true;
            }
        }
        return false;
    }

private:
    class Socket : public AsyncUdpSocket {
    public:
        Socket(FakeAsyncUdpSocketFactory& factory, AsyncUdpSocketDelegate& delegate)
            : m_factory(factory)
            , m_delegate(delegate)
        {
        }

        ~Socket() override
        {
            m_factory.m_transcript.add("destroy socket");
            std::erase(m_factory.m_sockets, this);
        }
        Socket(const Socket&) = delete;
        Socket& operator=(const Socket&) = delete;

        std::optional<Error> enableBroadcast(bool enabled) override
        {
            m_factory.m_transcript.add(enabled ? "enable broadcast" : "disable broadcast");
            return m_factory.broadcastError;
        }

        std::uint16_t connectedPort() const override { return m_factory.connectedPort; }

        std::optional<Error> bindToPort(std::uint16_t port) override
        {
            m_factory.m_transcript.add("bind " + std::to_string(port));
            if (m_factory.bindError)
                return m_factory.bindError;
            for (const Socket* other : m_factory.m_sockets) {
                if (other->m_port == port)
                    return "Address already in use";
            }
            m_port = port;
            return std::nullopt;
        }

        std::optional<Error> beginReceiving() override
        {
            m_factory.m_transcript.add("begin receiving");
            m_isReceiving = !m_factory.receiveError.has_value();
            return m_factory.receiveError;
        }

        std::optional<Error> receiveOnce() override
        {
            m_factory.m_transcript.add("receive once");
            return std::nullopt;
        }

        bool isClosed() const override { return m_isClosed; }

        void close() override
        {
            m_factory.m_transcript.add("close");
            m_isClosed = true;
            m_isReceiving = false;
            m_port = 0;
        }

        bool isReceiving() const { return m_isReceiving; }
        void deliver(std::string_view data, const UdpSender& from)
        {
            m_delegate.udpSocketDidReceiveData(*this, data, from);
        }

    private:
        FakeAsyncUdpSocketFactory& m_factory;
        AsyncUdpSocketDelegate& m_delegate;
        std::uint16_t m_port = 0;
        bool m_isReceiving = false;
        bool m_isClosed = false;
    };

    Transcript& m_transcript;
    std::vector<Socket*> m_sockets;
};

} // namespace companion::testing
