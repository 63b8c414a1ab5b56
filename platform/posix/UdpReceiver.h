#pragma once

#include "platform/Log.h"
#include "platform/posix/DatagramDelivery.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>

namespace companion {

/// The receive thread of a bound socket: takes datagrams out of the kernel's buffer as they come, however busy
/// the main thread is. The socket, the delivery and the log must outlive it.
class UdpReceiver {
public:
    /// `label` names the thread, cut to the 15 bytes that the system shows, and stands before its log lines.
    UdpReceiver(int socket, DatagramDelivery& delivery, SystemLog& log, std::string label);

    /// Ends the thread at once.
    ~UdpReceiver();
    UdpReceiver(const UdpReceiver&) = delete;
    UdpReceiver& operator=(const UdpReceiver&) = delete;

private:
    static constexpr std::size_t batchSize = 16;
    static constexpr std::size_t slotBytes = 65'536; // no datagram is longer

    void run();
    void prepareSlots();
    void takeBatch(std::size_t count);
    void takeDatagram(const msghdr& header, std::size_t size);
    void noteRefusal(bool wasSpare);
    void tellRefusals();
    void handleError(int error);
    void pauseFor(std::chrono::milliseconds duration);

    const int m_socket;
    DatagramDelivery& m_delivery;
    SystemLog& m_log;
    const std::string m_label;

    const std::unique_ptr<char[]> m_slots;
    std::array<mmsghdr, batchSize> m_messages{};
    std::array<iovec, batchSize> m_vectors{};
    std::array<sockaddr_storage, batchSize> m_senders{};

    std::uint64_t m_refusedSpare = 0;
    std::uint64_t m_refusedOthers = 0;
    std::chrono::steady_clock::time_point m_nextRefusalLine;

    std::atomic<bool> m_isStopping = false;
    std::mutex m_pauseMutex;
    std::condition_variable m_pauseEnd;
    std::thread m_thread;
};

} // namespace companion
