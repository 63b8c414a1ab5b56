#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

struct MHD_Connection;

namespace companion::simulator {

/// Connections that wait with their answer, for a time or until something happens. They cost nothing meanwhile: a
/// thread of its own watches for their time, and for clients that go away, which the HTTP library does not do.
class HeldConnections {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Throws std::system_error when there is no event descriptor to be had.
    HeldConnections();
    ~HeldConnections();

    /// To be asked before looking at what one would wait for, so that no wake-up is missed in between.
    std::uint64_t ticket() const;

    /// To be called inside the library's access handler, which is called again when `due` has come (nothing: when
    /// `wakeAll` is called after `ticket`), when the client is gone (`isGone` is then set), or at the end.
    void hold(
        MHD_Connection* connection, std::optional<Time> due, std::uint64_t ticket, std::atomic<bool>& isGone);

    /// Wakes those that wait for something to happen. Any thread.
    void wakeAll();

    /// Lets all go, as gone, and every later one at once. The HTTP servers may be stopped only after this.
    void stop();

private:
    struct Held {
        MHD_Connection* connection;
        int fd;
        std::optional<Time> due;
        std::uint64_t ticket;
        std::atomic<bool>* isGone;
    };

    void watch();
    void notify() const;
    void release(std::size_t index, bool isGone);
    void releaseReady();
    void releaseGone(const std::vector<int>& fds);
    int millisecondsToNext() const;

    mutable std::mutex m_mutex;
    std::vector<Held> m_held;
    std::uint64_t m_epoch = 0;
    bool m_isStopping = false;
    int m_event = -1;
    std::thread m_thread;
};

} // namespace companion::simulator
