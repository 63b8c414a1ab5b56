#include "platform/InputWay.h"

#include <algorithm>

namespace companion {

namespace {

std::string reasons(const std::vector<RefusedInputWay>& refused)
{
    std::string text;
    for (const RefusedInputWay& way : refused)
        text += (text.empty() ? "" : "; ") + way.whyNot;
    return text;
}

std::string wayText(bool isWaylandSession, InputWay way)
{
    switch (way) {
    case InputWay::virtualPointer:
        return "Touches are injected with the compositor's virtual pointer";
    case InputWay::portal:
        return "Touches are injected through the desktop's RemoteDesktop portal, which asks when touch is turned on";
    case InputWay::xtest:
        break;
    }
    // XTEST works on Wayland, too, but what it posts reaches X11 programs only, and nothing fails.
    return isWaylandSession ? "On Wayland touches reach X11 programs only; an X11 session has no such limit"
                            : "Touches are injected with the XTEST extension of the X server";
}

} // namespace

std::vector<InputWay> inputWays(bool isWaylandSession)
{
    if (isWaylandSession)
        return {InputWay::virtualPointer, InputWay::portal, InputWay::xtest};
    return {InputWay::xtest};
}

std::string inputChoiceText(
    bool isWaylandSession, InputWay picked, const std::vector<RefusedInputWay>& refused)
{
    return wayText(isWaylandSession, picked) + (refused.empty() ? "" : " (" + reasons(refused) + ")");
}

std::string noInputWayText(const std::vector<RefusedInputWay>& refused)
{
    const bool hasNoPortal = std::any_of(refused.begin(), refused.end(),
        [](const RefusedInputWay& way) { return way.way == InputWay::portal; });
    return "Cannot inject input: " + reasons(refused)
        + (hasNoPortal ? "; install xdg-desktop-portal and its backend for this desktop" : "");
}

} // namespace companion
