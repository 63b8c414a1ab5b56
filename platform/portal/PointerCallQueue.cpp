#include "platform/portal/PointerCallQueue.h"

#include <utility>

namespace companion {

PointerCallQueue::PointerCallQueue(Send send)
    : m_send(std::move(send))
{
}

void PointerCallQueue::add(const Event& event)
{
    const bool isMove = std::holds_alternative<Point>(event);
    if (isMove && !m_waiting.empty() && std::holds_alternative<Point>(m_waiting.back()))
        m_waiting.back() = event;
    else
        m_waiting.push_back(event);
    sendWaiting();
}

void PointerCallQueue::answered()
{
    --m_unanswered;
    sendWaiting();
}

void PointerCallQueue::sendWaiting()
{
    while (!m_waiting.empty() && m_unanswered < mostUnanswered) {
        ++m_unanswered;
        m_send(m_waiting.front());
        m_waiting.pop_front();
    }
}

} // namespace companion
