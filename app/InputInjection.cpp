#include "app/InputInjection.h"

#include <utility>

namespace companion {

InputInjection::InputInjection(bool isWaylandSession, std::vector<InputCandidate> candidates, SystemLog& log,
    StatusChanged statusChanged)
    : m_isWaylandSession(isWaylandSession)
    , m_candidates(std::move(candidates))
    , m_log(log)
    , m_statusChanged(std::move(statusChanged))
{
    choose();
}

InputInjection::~InputInjection() = default;

void InputInjection::choose()
{
    m_isChoosing = true;
    m_refused.clear();
    tryCandidate(0);
}

void InputInjection::tryCandidate(std::size_t index)
{
    if (index == m_candidates.size()) {
        m_isChoosing = false;
        if (m_areTouchesExpected)
            tellObstacle(noInputWayText(m_refused));
        return;
    }
    m_candidates[index].open([weak = std::weak_ptr(m_self), index](
                                 std::unique_ptr<MouseEventPoster> poster, const std::string& whyNot) {
        if (const auto self = weak.lock())
            (*self)->takeAnswer(index, std::move(poster), whyNot);
    });
}

void InputInjection::takeAnswer(
    std::size_t index, std::unique_ptr<MouseEventPoster> poster, const std::string& whyNot)
{
    const InputWay way = m_candidates[index].way;
    if (poster) {
        pick(way, std::move(poster));
        return;
    }
    m_refused.push_back({way, whyNot});
    tryCandidate(index + 1);
}

void InputInjection::pick(InputWay way, std::unique_ptr<MouseEventPoster> poster)
{
    m_isChoosing = false;
    m_way = way;
    m_posterOfAnyThread = poster.get();
    m_poster = std::move(poster);
    tellChoice(inputChoiceText(m_isWaylandSession, way, m_refused));
    if (m_areTouchesExpected)
        m_poster->touchesBegin();
}

void InputInjection::tellChoice(const std::string& sentence)
{
    if (m_areTouchesExpected && reachesX11ProgramsOnly()) {
        tellObstacle(sentence);
        return;
    }
    m_log.log(sentence);
    // The portal's pointer has an obstacle of its own until the permission is there.
    if (std::exchange(m_isObstacleTold, false) && m_way != InputWay::portal)
        m_statusChanged("");
}

void InputInjection::tellObstacle(const std::string& sentence)
{
    m_isObstacleTold = true;
    m_statusChanged(sentence);
}

bool InputInjection::reachesX11ProgramsOnly() const
{
    return m_isWaylandSession && m_way == InputWay::xtest;
}

/// A portal may have been installed, or have crashed at the last try.
bool InputInjection::canChooseBetter() const
{
    return !m_isChoosing && (!m_poster || reachesX11ProgramsOnly());
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

void InputInjection::touchesBegin()
{
    m_areTouchesExpected = true;
    if (canChooseBetter())
        choose();
    else if (m_poster)
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
