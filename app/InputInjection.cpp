#include "app/InputInjection.h"

#include <utility>

namespace companion {

InputInjection::InputInjection(bool isWaylandSession, std::vector<InputCandidate> candidates, SystemLog& log)
    : m_isWaylandSession(isWaylandSession)
    , m_candidates(std::move(candidates))
    , m_log(log)
{
    tryCandidate(0);
}

InputInjection::~InputInjection() = default;

void InputInjection::tryCandidate(std::size_t index)
{
    if (index == m_candidates.size())
        return;
    m_candidates[index].open([weak = std::weak_ptr(m_self), index](
                                 std::unique_ptr<MouseEventPoster> poster, const std::string& whyNot) {
        const auto self = weak.lock();
        if (!self)
            return;
        const InputWay way = (*self)->m_candidates[index].way;
        if (poster) {
            (*self)->pick(way, std::move(poster));
            return;
        }
        (*self)->m_refused.push_back({way, whyNot});
        (*self)->tryCandidate(index + 1);
    });
}

void InputInjection::pick(InputWay way, std::unique_ptr<MouseEventPoster> poster)
{
    m_poster = std::move(poster);
    m_posterOfAnyThread = m_poster.get();
    m_log.log(inputChoiceText(m_isWaylandSession, way, m_refused));
    if (m_areTouchesExpected)
        m_poster->touchesBegin();
}

/// Nothing is logged while a candidate has not answered.
void InputInjection::logNoWayOnce()
{
    const bool isDecided = m_refused.size() == m_candidates.size();
    if (isDecided && !std::exchange(m_isNoWayLogged, true))
        m_log.log(noInputWayText(m_refused));
}

std::optional<MouseEvent> InputInjection::makeMouseEvent(MouseEventType type, Point at)
{
    return m_poster ? m_poster->makeMouseEvent(type, at) : MouseEvent{type, at, 0};
}

std::optional<KeyEvent> InputInjection::makeKeyEvent(std::uint16_t keyCode, bool isDown)
{
    return m_poster ? m_poster->makeKeyEvent(keyCode, isDown) : std::nullopt;
}

void InputInjection::post(const MouseEvent& event)
{
    if (m_poster)
        m_poster->post(event);
    else
        logNoWayOnce();
}

void InputInjection::post(const KeyEvent& event)
{
    if (m_poster)
        m_poster->post(event);
}

void InputInjection::flush()
{
    if (m_poster)
        m_poster->flush();
}

void InputInjection::sync()
{
    if (m_poster)
        m_poster->sync();
}

void InputInjection::touchesBegin()
{
    m_areTouchesExpected = true;
    if (m_poster)
        m_poster->touchesBegin();
}

void InputInjection::touchesEnd()
{
    m_areTouchesExpected = false;
    if (m_poster)
        m_poster->touchesEnd();
}

void InputInjection::releaseHeldButton()
{
    if (MouseEventPoster* const poster = m_posterOfAnyThread)
        poster->releaseHeldButton();
}

} // namespace companion
