#pragma once

#include "bench/touch-path/MoveSender.h"
#include "bench/touch-path/PointerObserver.h"

#include <vector>

namespace companion::bench {

/// What one peer did in one round.
struct Result {
    double p50 = 0; ///< Microseconds from sending a move to seeing it.
    double p99 = 0;
    double eventsPerSecond = 0;
    int lost = 0; ///< Moves that were not seen within 200 ms of the last one.
};

/// Moves the pointer along the rows of the screen and looks at when each move is seen. No two of a million moves
/// have the same pixel.
class Measurement {
public:
    /// Both must outlive this object.
    Measurement(PointerObserver& observer, MoveSender& sender);

    /// The next move is sent when the one before has been seen.
    Result oneInFlight(int moves);

    Result atRate(int moves, std::chrono::nanoseconds period);

    /// As fast as the moves are seen, with `window` of them on their way.
    Result inFlight(int moves, int window);

private:
    void send();
    bool see(PointerObserver::TimePoint deadline);
    Result result(PointerObserver::TimePoint start) const;
    void begin(int moves);

    PointerObserver& m_observer;
    MoveSender& m_sender;
    int m_next = 0; ///< Numbers of moves go on from run to run.
    int m_first = 0;
    std::vector<PointerObserver::TimePoint> m_sentAt;
    std::vector<double> m_latencies;
};

} // namespace companion::bench
