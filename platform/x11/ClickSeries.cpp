#include "platform/x11/ClickSeries.h"

#include <cstdlib>

namespace companion {

void ClickSeries::addPress(TimePoint time, RootPixel at, double scale)
{
    m_count = isContinuedBy(time, at, scale) ? m_count + 1 : 1;
    m_lastTime = time;
    m_lastAt = at;
}

bool ClickSeries::isContinuedBy(TimePoint time, RootPixel at, double scale) const
{
    // Toolkits measure each axis for itself, in their scaled units.
    const double distance = m_rules.distance * scale;
    return m_count > 0 && time - m_lastTime < m_rules.interval && std::abs(at.x - m_lastAt.x) <= distance
        && std::abs(at.y - m_lastAt.y) <= distance;
}

} // namespace companion
