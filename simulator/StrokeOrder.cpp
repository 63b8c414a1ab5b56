#include "simulator/StrokeOrder.h"

namespace companion::simulator {

StrokeOrder::Verdict StrokeOrder::judge(const std::string& stroke, std::uint64_t part, Time now) const
{
    if (stroke == m_stroke && part < m_next)
        return Verdict::Played;
    if (isUnderWay(stroke))
        return part == m_next ? Verdict::Play : Verdict::Early;
    if (m_isDown && now - m_lastHeard < restingTime)
        return Verdict::Busy;
    if (stroke == m_stroke)
        return Verdict::Unknown;
    // A later part of an unknown stroke may have overtaken the first one.
    return part == 0 ? Verdict::Play : Verdict::Early;
}

std::optional<GestureStep> StrokeOrder::liftBefore(std::uint64_t part) const
{
    if (part != 0 || !m_isDown || m_place.empty())
        return std::nullopt;
    return GestureStep{/*isTouch=*/true, "UP," + m_place};
}

void StrokeOrder::played(const std::string& stroke, std::uint64_t part, const Gesture& gesture, Time now)
{
    m_stroke = stroke;
    m_next = part + 1;
    m_lastHeard = now;
    for (const GestureStep& step : gesture) {
        if (!step.isTouch)
            continue;
        m_isDown = !step.bytes.starts_with("UP,");
        m_place = step.bytes.substr(step.bytes.find(',') + 1);
    }
}

} // namespace companion::simulator
