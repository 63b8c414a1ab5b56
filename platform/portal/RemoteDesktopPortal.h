#pragma once

#include "platform/Geometry.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace companion {

/// A screen that the desktop shows to this program, and in whose space absolute motion lies.
struct ScreenStream {
    std::uint32_t node = 0;
    std::optional<Size> size; ///< In the compositor's logical pixels; some portals do not tell it.
};

/// The portal's answer to one request of a session.
struct PortalAnswer {
    enum class Kind { done, cancelled, failed };

    Kind kind = Kind::done;
    std::string error = {}; ///< One line, of `failed`.

    // Of a start that was done.
    bool isPointerAllowed = false;
    std::optional<ScreenStream> stream = {};
    std::string restoreToken = {}; ///< "" when there is none.
};

/// How long the desktop remembers a consent.
enum class PersistMode : std::uint32_t { none = 0, whileRunning = 1, untilRevoked = 2 };

/// One session at a time with org.freedesktop.portal.RemoteDesktop. Main thread only; no call waits, and each callback
/// comes later, once at most, and not at all after `closeSession`.
class RemoteDesktopPortal {
public:
    using Answered = std::function<void(const PortalAnswer&)>;

    virtual ~RemoteDesktopPortal() = default;

    /// Starts the portal where the bus can. `version` is 0 with an error in one line when there is none.
    using VersionRead = std::function<void(unsigned version, const std::string& error)>;
    virtual void readVersion(VersionRead read) = 0;

    // In this order, each one after the answer to the one before. `start` is answered when the person has answered.
    virtual void createSession(Answered answered) = 0;
    virtual void selectPointer(PersistMode mode, const std::string& restoreToken, Answered answered) = 0;
    virtual void selectMonitor(Answered answered) = 0;
    virtual void start(Answered answered) = 0;

    // Once started; `answered` has an error in one line, or "".
    using Notified = std::function<void(const std::string& error)>;
    virtual void notifyMotion(std::uint32_t streamNode, Point at, Notified answered) = 0;
    virtual void notifyLeftButton(bool isDown, Notified answered) = 0;

    /// Also takes back what is being asked. Does nothing without a session.
    virtual void closeSession() = 0;

    enum class Loss { closed, portalGone };
    /// Called when the portal ends the session or a request; nothing is left to be closed then.
    virtual void setWhenLost(std::function<void(Loss)> whenLost) = 0;

    /// Called when the desktop's lock screen or screen saver begins and when it ends, perhaps more than once.
    virtual void setWhenLocked(std::function<void(bool isLocked)> whenLocked) = 0;
};

} // namespace companion
