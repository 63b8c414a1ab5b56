#include "platform/ClickSeries.h"

#include <cmath>

namespace companion {

void ClickSeries::addPress(const Press& press, double scale)
{
    m_count = isContinuedBy(press, scale) ? m_count + 1 : 1;
    m_last = press;
}

bool ClickSeries::isContinuedBy(const Press& press, double scale) const
{
    // Toolkits measure each axis by itself, in their scaled units.
    const double distance = m_rules.distance * scale;
    return m_count > 0 && press.window == m_last.window && press.time - m_last.time < m_rules.interval
        && std::abs(press.at.x - m_last.at.x) <= distance && std::abs(press.at.y - m_last.at.y) <= distance;
}

} // namespace companion
