#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/MainQueue.h"
#include "platform/posix/DatagramQueue.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <string_view>

namespace companion {

/// Brings datagrams from whoever receives them to the delegate on the main thread, in arrival order.
///
/// At most one wake-up of the main queue is pending at any time. A wake-up delivers for 5 ms at most and then
/// queues itself again, so that the program stays alive in a flood. Its jobs name it by address: it must live
/// until the main queue has run the jobs handed in before `close` (see `isWakePending`).
class DatagramDelivery {
public:
    /// `afterSlice`, which may be empty, is called once after each slice that delivered anything. Main thread.
    DatagramDelivery(AsyncUdpSocket& socket, AsyncUdpSocketDelegate& delegate, MainQueue& mainQueue,
        std::function<void()> afterSlice);

    /// Takes a datagram in, or refuses it. Any thread, but one after the other.
    bool offer(const DatagramSource& source, std::string_view data) { return m_queue.push(source, data); }

    /// A movement of a finger that is down, as the panel sends it.
    static bool isMove(std::string_view data) { return data.starts_with("MOVE"); }

    /// Has what was taken in delivered. Any thread.
    void wake();

    /// Whether all that was taken in has been delivered. Any thread.
    bool isEmpty() const { return m_queue.isEmpty(); }

    // The rest is for the main thread only.

    /// Delivers what was taken in, without a wake-up. To be called between two jobs of the main queue. The delegate may
    /// close the socket meanwhile.
    void deliverNow();

    void deliverAll();
    void deliverOne();

    /// Nothing is delivered any more, not even by the slice that is running.
    void close() { m_isOpen = false; }

    bool isWakePending() const { return m_isWakePending; }

private:
    void runSlice();
    bool isWanted() const { return m_isOpen && (m_deliversAll || m_wanted > 0); }
    void deliverFront();
    bool mayRest();
    void noteSender(const DatagramSource& source);

    AsyncUdpSocket& m_socket;
    AsyncUdpSocketDelegate& m_delegate;
    MainQueue& m_mainQueue;
    const std::function<void()> m_afterSlice;
    DatagramQueue m_queue;
    std::atomic<bool> m_isWakePending = false;

    bool m_isOpen = true;
    bool m_deliversAll = false;
    std::uint64_t m_wanted = 0;
    DatagramSource m_source; ///< What `m_sender` was made from.
    UdpSender m_sender;
};

} // namespace companion
