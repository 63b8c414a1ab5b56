#pragma once

#include "platform/MouseEventPoster.h"
#include "platform/testing/Transcript.h"

#include <vector>

namespace companion::testing {

/// Keeps the posted events and writes them as words: "down", "up", "drag", with the click state behind it where one
/// was set ("down2"), and "key56down+control", "key56up".
class FakeMouseEventPoster : public MouseEventPoster {
public:
    explicit FakeMouseEventPoster(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override
    {
        ++mouseEventsMade;
        if (!canMakeMouseEvents)
            return std::nullopt;
        return MouseEvent{type, at, 0};
    }

    std::optional<KeyEvent> makeKeyEvent(std::uint16_t keyCode, bool isDown) override
    {
        if (!canMakeKeyEvents)
            return std::nullopt;
        return KeyEvent{keyCode, isDown, 0};
    }

    void post(const MouseEvent& event) override
    {
        posted.push_back(event);
        m_transcript.add(word(event.type) + (event.clickState ? std::to_string(event.clickState) : ""));
    }

    void post(const KeyEvent& event) override
    {
        m_transcript.add("key" + std::to_string(event.keyCode) + (event.isDown ? "down" : "up")
            + (event.flags == controlModifierFlag ? "+control" : ""));
    }

    void flush() override { }
    void touchesBegin() override { ++touchesBegan; }
    void touchesEnd() override { ++touchesEnded; }
    void releaseHeldButton() override { }

    bool canMakeMouseEvents = true;
    bool canMakeKeyEvents = true;
    int mouseEventsMade = 0;
    int touchesBegan = 0;
    int touchesEnded = 0;
    std::vector<MouseEvent> posted;

private:
    static std::string word(MouseEventType type)
    {
        switch (type) {
        case MouseEventType::leftDown:
            return "down";
        case MouseEventType::leftUp:
            return "up";
        case MouseEventType::leftDragged:
            return "drag";
        }
        return "?";
    }

    Transcript& m_transcript;
};

} // namespace companion::testing
