#pragma once

#include <cstddef>
#include <functional>
#include <list>

namespace companion {

/// Lets tasks work a few at a time, first come, first served; one that takes long steps aside, still working, and
/// the next one gets its place. One thread only; must outlive its turns.
class TurnQueue {
public:
    class Turn;

    /// At most `places` tasks have a place at once, and at most `limit` (more than `places`) work or are aside. Past
    /// that the one that has been aside for longest is suspended and waits for another turn.
    TurnQueue(std::size_t places, std::size_t limit)
        : m_places(places)
        , m_limit(limit)
    {
    }
    TurnQueue(const TurnQueue&) = delete;
    TurnQueue& operator=(const TurnQueue&) = delete;

private:
    using Turns = std::list<Turn*>;

    void advance();
    void suspendOldest();

    std::size_t m_places;
    std::size_t m_limit;
    Turns m_waiting;
    Turns m_working;
    Turns m_aside;
};

/// One task's turn.
class TurnQueue::Turn {
public:
    /// `begin` starts the task, perhaps more than once and perhaps within `enter`; `suspend` undoes that. Neither
    /// may destroy a turn.
    Turn(TurnQueue& queue, std::function<void()> begin, std::function<void()> suspend);
    ~Turn() { leave(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

    /// Waits for its turn.
    void enter();
    /// Gives the place up but goes on working.
    void stepAside();
    /// Waits and works no more.
    void leave();

private:
    friend class TurnQueue;

    void moveTo(Turns& list);

    TurnQueue& m_queue;
    std::function<void()> m_begin;
    std::function<void()> m_suspend;
    Turns* m_list = nullptr;
    Turns::iterator m_position;
};

} // namespace companion
