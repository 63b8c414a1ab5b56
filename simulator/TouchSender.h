#pragma once

#include "simulator/Gesture.h"
#include "simulator/PanelState.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <thread>

namespace companion::simulator {

/// A gesture that is played or waits for its turn. Any thread.
class Playback {
public:
    struct Result {
        std::size_t sent = 0;
        bool isRefused = false; ///< nobody wants touches (any more)
        std::string problem;    ///< "" when the whole gesture went out
    };

    using WhenOver = std::function<void(const Result&)>;

    /// `whenOver` is called when the result is there; never when the sender stops before this gesture's turn.
    explicit Playback(Gesture gesture, WhenOver whenOver = {});
    const Gesture& gesture() const { return m_gesture; }

    void finish(const Result& result);
    /// Nothing while it is not over.
    std::optional<Result> result() const;

private:
    const Gesture m_gesture;
    const WhenOver m_whenOver;
    mutable std::mutex m_mutex;
    std::optional<Result> m_result;
};

/// Sends touches to the computer that asked for them: gestures one after the other, in order, on a thread of its own,
/// each datagram at its own time whatever the ones before it took.
class TouchSender {
public:
    /// Datagrams come from `address`. `whenFinished` is called on the sender's thread after each gesture.
    /// Throws std::system_error when there is no socket to be had.
    TouchSender(PanelState& state, const std::string& address, std::uint16_t port,
        std::function<void()> whenFinished);
    ~TouchSender();

    /// Nothing when too many gestures wait already. `whenOver` is called on the sender's thread.
    std::shared_ptr<Playback> play(Gesture gesture, Playback::WhenOver whenOver = {});

private:
    using SteadyTime = std::chrono::steady_clock::time_point;

    void run();
    std::shared_ptr<Playback> nextPlayback();
    Playback::Result send(const Gesture& gesture);
    bool sleepUntil(SteadyTime time, bool hasBegun);
    std::string sendDatagram(const std::string& ip, const std::string& bytes) const;

    PanelState& m_state;
    const std::uint16_t m_port;
    const std::function<void()> m_whenFinished;
    int m_socket = -1;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::shared_ptr<Playback>> m_waiting;
    bool m_isStopping = false;
    std::thread m_thread;
};

} // namespace companion::simulator
