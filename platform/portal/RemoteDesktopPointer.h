#pragma once

#include "platform/PointerDevice.h"
#include "platform/portal/PointerCallQueue.h"
#include "platform/portal/RemoteDesktopPortal.h"
#include "platform/portal/RestoreToken.h"
#include "platform/Screen.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace companion {

/// The pointer that the desktop's RemoteDesktop portal grants, on the screen that the person picks in its dialog. Main
/// thread only.
///
/// It is asked for when touches begin, unless it is there or being asked for. The session stays open from then on; when
/// the desktop ends it, the next touches ask again, by the token of the last consent if there is one. What the lock screen
/// ended is restored by that token as soon as it is unlocked.
class RemoteDesktopPointer : public PointerDevice {
public:
    /// One sentence on why touches do not arrive, or "" when they do. It may be called within `touchesBegin`.
    using StatusChanged = std::function<void(const std::string& sentence)>;
    using TimePoint = std::chrono::steady_clock::time_point;
    using Now = std::function<TimePoint()>;

    /// `screen`, which stands in where the portal does not tell the size of the picked one, must outlive this object.
    RemoteDesktopPointer(std::unique_ptr<RemoteDesktopPortal> portal, const Screen& screen,
        RestoreToken token, StatusChanged statusChanged, Now now = std::chrono::steady_clock::now);
    ~RemoteDesktopPointer() override;

    std::optional<Size> area() const override;
    void moveTo(Point at) override;
    void setLeftButtonDown(bool isDown) override;
    void flush() override { }
    void touchesBegin() override;

private:
    enum class State { closed, asking, granted };
    using Answered = RemoteDesktopPortal::Answered;

    Answered then(void (RemoteDesktopPointer::*next)());
    void create(unsigned version, const std::string& error);
    void selectPointer();
    void selectMonitor();
    void start();
    void finish(const PortalAnswer& answer);
    void grant(const ScreenStream& stream);
    void fail(const PortalAnswer& answer);
    void close(const std::string& sentence);
    void lose(const std::string& why, bool isLostByLock);
    void lockChanged(bool isLocked);
    void restoreWhatLockEnded();
    PersistMode persistMode() const;
    void send(const PointerCallQueue::Event& event);

    const std::unique_ptr<RemoteDesktopPortal> m_portal;
    const Screen& m_screen;
    RestoreToken m_token;
    StatusChanged m_statusChanged;
    const Now m_now;
    State m_state = State::closed;
    unsigned m_version = 0;
    ScreenStream m_stream;
    std::optional<PointerCallQueue> m_calls; ///< Of the session.

    bool m_isLocked = false;
    bool m_wasLocked = false;          ///< Since the session was last known to be open.
    std::optional<TimePoint> m_lostAt; ///< Of the session that was granted last.
    bool m_isLostByLock = false;
};

} // namespace companion
