#include "bench/touch-path/Measurement.h"

#include <algorithm>

namespace companion::bench {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

constexpr int columns = 1270;
constexpr int rows = 790;
constexpr auto patience = 200ms;

double percentile(std::vector<double> values, double part)
{
    if (values.empty())
        return 0;
    const auto nth =
        values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), nth, values.end());
    return *nth;
}

} // namespace

Measurement::Measurement(PointerObserver& observer, MoveSender& sender)
    : m_observer(observer)
    , m_sender(sender)
{
}

Result Measurement::oneInFlight(int moves)
{
    begin(moves);
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        send();
        see(Clock::now() + patience);
    }
    return result(start);
}

Result Measurement::atRate(int moves, std::chrono::nanoseconds period)
{
    begin(moves);
    const auto start = Clock::now();
    for (int i = 0; i < moves; ++i) {
        const auto due = start + i * period;
        while (Clock::now() < due)
            see(due);
        send();
    }
    while (m_latencies.size() < m_sentAt.size() && see(Clock::now() + patience)) { }
    return result(start);
}

Result Measurement::inFlight(int moves, int window)
{
    begin(moves);
    const auto start = Clock::now();
    int onTheirWay = 0;
    while (static_cast<int>(m_sentAt.size()) < moves || onTheirWay > 0) {
        while (onTheirWay < window && static_cast<int>(m_sentAt.size()) < moves) {
            send();
            ++onTheirWay;
        }
        onTheirWay = see(Clock::now() + patience) ? onTheirWay - 1 : 0;
    }
    return result(start);
}

void Measurement::begin(int moves)
{
    while (m_observer.next(Clock::now() + 5ms)) { }
    m_first = m_next;
    m_sentAt.clear();
    m_latencies.clear();
    m_sentAt.reserve(static_cast<std::size_t>(moves));
    m_latencies.reserve(static_cast<std::size_t>(moves));
}

void Measurement::send()
{
    const int x = 1 + m_next % columns;
    const int y = 1 + m_next / columns % rows;
    ++m_next;
    m_sentAt.push_back(Clock::now());
    m_sender.send(x, y);
}

bool Measurement::see(PointerObserver::TimePoint deadline)
{
    const auto motion = m_observer.next(deadline);
    const auto now = Clock::now();
    if (!motion)
        return false;
    const int place = (motion->y - 1) * columns + motion->x - 1;
    const int number = place - m_first % (columns * rows);
    if (number >= 0 && number < static_cast<int>(m_sentAt.size()))
        m_latencies.push_back(
            std::chrono::duration<double, std::micro>(now - m_sentAt[static_cast<std::size_t>(number)])
                .count());
    return true;
}

Result Measurement::result(PointerObserver::TimePoint start) const
{
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return {percentile(m_latencies, 0.5), percentile(m_latencies, 0.99),
        static_cast<double>(m_latencies.size()) / seconds,
        static_cast<int>(m_sentAt.size() - m_latencies.size())};
}

} // namespace companion::bench
