#pragma once

#include "simulator/Gesture.h"
#include "simulator/PanelState.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

namespace companion::simulator {

struct PlaybackResult {
    std::size_t sent = 0;
    bool isRefused = false; ///< no computer wants touches (any more)
    std::string problem;    ///< "" if the whole gesture went out
};

/// Ready when the gesture has ended; not valid if too many gestures were waiting already.
using Playback = std::shared_future<PlaybackResult>;

/// "1 datagram", "2 datagrams"
std::string datagramCount(std::size_t count);

/// Sends touches to the computer that asked for them: one gesture after the other, on a thread of its own. Each datagram
/// has its own due time, so delays do not accumulate. Any thread.
class TouchSender {
public:
    using WhenOver = std::function<void(const PlaybackResult&)>;

    /// Datagrams come from `address`. Throws std::system_error if there is no socket.
    TouchSender(PanelState& state, const std::string& address, std::uint16_t port);
    ~TouchSender();
    TouchSender(const TouchSender&) = delete;
    TouchSender& operator=(const TouchSender&) = delete;

    /// `whenOver` is called on the sender's thread before the playback becomes ready; never if the sender stops before
    /// this gesture's turn.
    Playback play(Gesture gesture, WhenOver whenOver = {});

private:
    using SteadyTime = std::chrono::steady_clock::time_point;
    using Task = std::packaged_task<PlaybackResult()>;

    void run();
    Task nextTask();
    PlaybackResult send(const Gesture& gesture);
    bool sleepUntil(SteadyTime time, bool hasBegun);
    std::string sendDatagram(const std::string& ip, const std::string& bytes) const;

    PanelState& m_state;
    const std::uint16_t m_port;
    int m_socket = -1;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Task> m_waiting;
    bool m_isStopping = false;
    std::thread m_thread;
};

} // namespace companion::simulator
