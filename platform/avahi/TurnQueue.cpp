#include "platform/avahi/TurnQueue.h"

#include <utility>

namespace companion {

void TurnQueue::advance()
{
    while (!m_waiting.empty() && m_working.size() < m_places) {
        if (m_working.size() + m_aside.size() >= m_limit)
            suspendOldest();
        Turn& next = *m_waiting.front();
        next.moveTo(m_working);
        next.m_begin();
    }
}

void TurnQueue::suspendOldest()
{
    Turn& oldest = *m_aside.front();
    oldest.moveTo(m_waiting);
    oldest.m_suspend();
}

TurnQueue::Turn::Turn(TurnQueue& queue, std::function<void()> begin, std::function<void()> suspend)
    : m_queue(queue)
    , m_begin(std::move(begin))
    , m_suspend(std::move(suspend))
{
}

void TurnQueue::Turn::enter()
{
    leave();
    m_list = &m_queue.m_waiting;
    m_position = m_list->insert(m_list->end(), this);
    m_queue.advance();
}

void TurnQueue::Turn::stepAside()
{
    if (m_list != &m_queue.m_working)
        return;
    moveTo(m_queue.m_aside);
    m_queue.advance();
}

void TurnQueue::Turn::leave()
{
    if (!m_list)
        return;
    m_list->erase(m_position);
    m_list = nullptr;
    m_queue.advance();
}

void TurnQueue::Turn::moveTo(Turns& list)
{
    list.splice(list.end(), *m_list, m_position);
    m_list = &list;
}

} // namespace companion
