#pragma once

#include <optional>
#include <string>
#include <vector>

namespace companion {

/// The ways in which touches can become input events.
enum class InputWay {
    xtest,          ///< The X server's XTEST extension; on Wayland it reaches X11 programs only.
    virtualPointer, ///< The virtual pointer of compositors built on wlroots; asks nobody.
    portal,         ///< The desktop's RemoteDesktop portal; asks the person who sits there.
};

/// Those to try in a session, best first.
std::vector<InputWay> inputWays(bool isWaylandSession);

struct RefusedInputWay {
    InputWay way;
    std::string whyNot; ///< One line.
};

/// The line that says which way was picked, and why not those before it.
std::string inputChoiceText(
    bool isWaylandSession, InputWay picked, const std::vector<RefusedInputWay>& refused);

/// The line for when there is no way, with what to install.
std::string noInputWayText(const std::vector<RefusedInputWay>& refused);

} // namespace companion
