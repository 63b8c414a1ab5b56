#pragma once

#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/posix/DatagramDelivery.h"
#include "platform/posix/WakeUp.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <string>
#include <sys/socket.h>
#include <thread>

namespace companion {

/// Takes datagrams out of the kernel's buffer of a bound socket, however busy the main thread is.
///
/// A main thread that keeps up reads the socket itself, since the hand-over from another thread would take longer than
/// all that it does with a touch. A receive thread stands guard meanwhile: it sleeps while nothing comes, looks in from
/// time to time while something does, and reads for as long as the main thread is behind.
///
/// Made and destroyed on the main thread. The socket, the main queue and the log must outlive it.
class UdpReceiver {
public:
    /// `label` names the thread, cut to the 15 bytes that the system shows, and stands before its log lines.
    /// Throws std::system_error when there can be no further thread or descriptor.
    UdpReceiver(int socket, std::shared_ptr<DatagramDelivery> delivery, MainQueue& mainQueue, SystemLog& log,
        std::string label);

    /// Ends the thread at once. May be called from within a delivery.
    ~UdpReceiver();
    UdpReceiver(const UdpReceiver&) = delete;
    UdpReceiver& operator=(const UdpReceiver&) = delete;

private:
    static constexpr std::size_t batchSize = 16;
    static constexpr std::size_t slotBytes = 65'536; // no datagram is longer

    enum class Reader { mainThread, receiveThread };

    /// What a look into the kernel's buffer brought.
    enum class Outcome { emptied, moreIsLeft, failed };

    void watch();
    void readOnMainThread();

    void run();
    void standGuard();
    void readWhileMainThreadIsBehind();
    bool isReader(Reader reader);
    void takeOver();
    void handBack();
    bool waitForDatagram(std::chrono::milliseconds timeout);
    void pauseFor(std::chrono::milliseconds duration);

    void prepareSlots();
    Outcome readBatches(std::size_t most);
    void takeDatagram(const msghdr& header, std::size_t size);
    void noteRefusal(bool wasMove);
    void tellRefusals();

    const int m_socket;
    const std::shared_ptr<DatagramDelivery> m_delivery;
    MainQueue& m_mainQueue;
    SystemLog& m_log;
    const std::string m_label;

    std::unique_ptr<ReadableWatch> m_watch; ///< Main thread only.
    const std::shared_ptr<UdpReceiver*> m_self = std::make_shared<UdpReceiver*>(this);

    std::mutex m_mutex; ///< Whoever reads has it, and so the slots and all up to the next blank line.
    Reader m_reader = Reader::mainThread;
    const std::unique_ptr<char[]> m_slots;
    std::array<mmsghdr, batchSize> m_messages{};
    std::array<iovec, batchSize> m_vectors{};
    std::array<sockaddr_storage, batchSize> m_senders{};
    std::uint64_t m_refusedMoves = 0;
    std::uint64_t m_refusedOthers = 0;
    std::chrono::steady_clock::time_point m_nextRefusalLine;
    int m_error = 0; ///< Of the outcome `failed`.

    std::atomic<std::uint64_t> m_mainThreadsReads = 0;
    std::atomic<bool> m_isStopping = false;
    WakeUp m_wakeUp; ///< Rung for the receive thread.
    std::thread m_thread;
};

} // namespace companion
