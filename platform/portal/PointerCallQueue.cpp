#include "platform/portal/PointerCallQueue.h"

#include <utility>

namespace companion {

PointerCallQueue::PointerCallQueue(Send send)
    : m_send(std::move(send))
{
}

void PointerCallQueue::add(const Event& event)
{
    const bool mayMerge = m_waiting.size() + 1 >= mostUnanswered && std::holds_alternative<Point>(event);
    if (mayMerge && std::holds_alternative<Point>(m_waiting.back()))
        m_waiting.back() = event;
    else
        m_waiting.push_back(event);
    if (!m_isAnswerDue)
        sendNext();
}

void PointerCallQueue::answered()
{
    m_isAnswerDue = false;
    if (!m_waiting.empty())
        sendNext();
}

void PointerCallQueue::sendNext()
{
    const Event event = m_waiting.front();
    m_waiting.pop_front();
    m_isAnswerDue = true;
    m_send(event);
}

} // namespace companion
