#pragma once

#include "platform/InputWay.h"
#include "platform/Log.h"
#include "platform/MouseEventPoster.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace companion {

/// One way of injecting input, to be tried.
struct InputCandidate {
    /// Called at most once, at once or later, on the main thread: with a poster, or with none and why in one line.
    using Opened = std::function<void(std::unique_ptr<MouseEventPoster> poster, const std::string& whyNot)>;

    InputWay way = InputWay::xtest;
    std::function<void(Opened)> open;
};

/// Picks the first way of injecting input that can be opened, logs the choice with its reason in one line, and posts that
/// way. Main thread only, but for `releaseHeldButton`.
///
/// Touches are dropped while the choice is being made, and where there is no way. Then, and where only X11 programs of a
/// Wayland session are reached, the choice is made anew whenever touches begin.
class InputInjection : public MouseEventPoster {
public:
    /// One sentence on what keeps touches from all programs or some of them; "" when nothing does any more. To be logged.
    using StatusChanged = std::function<void(const std::string& sentence)>;

    /// `log` must outlive this object. The candidates come best first.
    InputInjection(bool isWaylandSession, std::vector<InputCandidate> candidates, SystemLog& log,
        StatusChanged statusChanged);
    ~InputInjection() override;

    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override;
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override;
    void post(const MouseEvent& event) override;
    void post(const KeyEvent& event) override;
    void flush() override;
    void touchesBegin() override;
    void touchesEnd() override;
    void releaseHeldButton() override;

private:
    void choose();
    void tryCandidate(std::size_t index);
    void takeAnswer(std::size_t index, std::unique_ptr<MouseEventPoster> poster, const std::string& whyNot);
    void pick(InputWay way, std::unique_ptr<MouseEventPoster> poster);
    void tellChoice(const std::string& sentence);
    void tellObstacle(const std::string& sentence);
    bool reachesX11ProgramsOnly() const;
    bool canChooseBetter() const;

    const bool m_isWaylandSession;
    const std::vector<InputCandidate> m_candidates;
    SystemLog& m_log;
    const StatusChanged m_statusChanged;
    bool m_isChoosing = false;
    std::vector<RefusedInputWay> m_refused;
    InputWay m_way = InputWay::xtest; ///< Of the poster.
    std::unique_ptr<MouseEventPoster> m_poster;
    std::atomic<MouseEventPoster*> m_posterOfAnyThread = nullptr;
    bool m_areTouchesExpected = false;
    bool m_isObstacleTold = false;
    const std::shared_ptr<InputInjection*> m_self = std::make_shared<InputInjection*>(this);
};

} // namespace companion
