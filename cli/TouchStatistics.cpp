#include "cli/TouchStatistics.h"

#include "cli/Text.h"
#include "touchback/Number.h"
#include "touchback/TouchMessage.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace companion::cli {

namespace {

bool isTouchEvent(std::string_view event)
{
    return event == "DOWN" || event == "MOVE" || event == "UP";
}

bool isWellFormed(const std::optional<TouchMessage>& message)
{
    return message && isTouchEvent(message->event) && parseNumber(message->xCoordinate)
        && parseNumber(message->yCoordinate);
}

std::string many(std::uint64_t count, const std::string& one, const std::string& several)
{
    return std::to_string(count) + " " + (count == 1 ? one : several);
}

double millisecondsOf(std::chrono::nanoseconds time)
{
    return static_cast<double>(time.count()) / 1e6;
}

} // namespace

void TouchStatistics::take(std::string_view datagram, TimePoint now)
{
    if (m_count++ == 0)
        m_first = now;
    m_last = now;
    const auto message = parseTouchMessage(datagram);
    if (!isWellFormed(message)) {
        ++m_malformed;
        return;
    }
    takeEvent(message->event, now);
    takeTimeStamp(message->timeStamp);
}

void TouchStatistics::takeEvent(std::string_view event, TimePoint now)
{
    if (m_lastOfPress) {
        const auto gap = now - *m_lastOfPress;
        m_longestGap = std::max<std::chrono::nanoseconds>(m_longestGap, gap);
        m_longGaps += gap > gapWorthTelling ? 1 : 0;
    }
    // Nothing comes while no finger is on the panel, so only what lies between DOWN and UP can be a gap.
    m_lastOfPress = event == "UP" ? std::nullopt : std::optional(now);
}

void TouchStatistics::takeTimeStamp(std::string_view stamp)
{
    const auto time = parseNumber(stamp);
    if (!time)
        return;
    if (m_lastStamp && *time < *m_lastStamp)
        ++m_outOfOrder;
    m_lastStamp = time;
}

double TouchStatistics::seconds() const
{
    return std::chrono::duration<double>(m_last - m_first).count();
}

/// From the first touch to the last one, so many intervals.
double TouchStatistics::rate() const
{
    return seconds() > 0 ? static_cast<double>(m_count - 1) / seconds() : 0;
}

std::string TouchStatistics::text() const
{
    if (m_count == 0)
        return "no touches";
    const auto whole = std::chrono::duration_cast<std::chrono::milliseconds>(m_last - m_first);
    std::string text = many(m_count, "touch", "touches") + " in " + secondsText(whole);
    if (rate() > 0)
        text += " (" + std::to_string(std::llround(rate())) + " a second), longest gap in a press "
            + std::to_string(std::llround(millisecondsOf(m_longestGap))) + " ms";
    if (m_longGaps > 0)
        text += ", " + many(m_longGaps, "gap", "gaps") + " over " + std::to_string(gapWorthTelling.count())
            + " ms";
    if (m_outOfOrder > 0)
        text += ", " + std::to_string(m_outOfOrder) + " with an earlier time stamp than the one before";
    if (m_malformed > 0)
        text += ", " + std::to_string(m_malformed) + " malformed";
    return text;
}

Json TouchStatistics::json() const
{
    return {{"touches", m_count}, {"seconds", jsonNumber(seconds())}, {"perSecond", jsonNumber(rate())},
        {"longestGapMs", jsonNumber(millisecondsOf(m_longestGap))}, {"gapsOver100Ms", m_longGaps},
        {"outOfOrder", m_outOfOrder}, {"malformed", m_malformed}};
}

} // namespace companion::cli
