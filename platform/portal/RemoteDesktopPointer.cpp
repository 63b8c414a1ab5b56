#include "platform/portal/RemoteDesktopPointer.h"

#include <utility>

namespace companion {

namespace {

constexpr unsigned firstVersionWithTokens = 2;

// Desktops close sessions first, and say that they are locked once the lock screen has faded in.
constexpr std::chrono::seconds longestFadeOfLockScreen{5};

std::string dropped(const std::string& why)
{
    return "No touch: " + why + "; turn touch on again to be asked again";
}

} // namespace

RemoteDesktopPointer::RemoteDesktopPointer(std::unique_ptr<RemoteDesktopPortal> portal, const Screen& screen,
    RestoreToken token, StatusChanged statusChanged, Now now)
    : m_portal(std::move(portal))
    , m_screen(screen)
    , m_token(std::move(token))
    , m_statusChanged(std::move(statusChanged))
    , m_now(std::move(now))
{
    m_portal->setWhenLost([this](RemoteDesktopPortal::Loss loss) {
        if (loss == RemoteDesktopPortal::Loss::closed)
            lose("the desktop stopped sharing the screen", m_isLocked);
        else
            lose("the desktop's portal has gone or was restarted", /*isLostByLock=*/false);
    });
    m_portal->setWhenLocked([this](bool isLocked) { lockChanged(isLocked); });
}

RemoteDesktopPointer::~RemoteDesktopPointer()
{
    m_portal->closeSession();
}

std::optional<Size> RemoteDesktopPointer::area() const
{
    if (m_state != State::granted)
        return std::nullopt;
    return m_stream.size ? m_stream.size : m_screen.mainScreenSize();
}

void RemoteDesktopPointer::touchesBegin()
{
    if (m_state != State::closed)
        return;
    m_state = State::asking;
    m_lostAt.reset();
    m_isLostByLock = false;
    m_portal->readVersion([this](unsigned version, const std::string& error) { create(version, error); });
}

RemoteDesktopPortal::Answered RemoteDesktopPointer::then(void (RemoteDesktopPointer::*next)())
{
    return [this, next](const PortalAnswer& answer) {
        if (answer.kind == PortalAnswer::Kind::done)
            (this->*next)();
        else
            fail(answer);
    };
}

void RemoteDesktopPointer::create(unsigned version, const std::string& error)
{
    m_version = version;
    if (version == 0)
        fail({.kind = PortalAnswer::Kind::failed, .error = error});
    else
        m_portal->createSession(then(&RemoteDesktopPointer::selectPointer));
}

void RemoteDesktopPointer::selectPointer()
{
    const bool hasTokens = m_version >= firstVersionWithTokens;
    const std::string token = hasTokens ? m_token.value() : "";
    m_portal->selectPointer(persistMode(), token, then(&RemoteDesktopPointer::selectMonitor));
}

PersistMode RemoteDesktopPointer::persistMode() const
{
    if (m_version < firstVersionWithTokens)
        return PersistMode::none;
    return m_token.isKeptOnDisk() ? PersistMode::untilRevoked : PersistMode::whileRunning;
}

void RemoteDesktopPointer::selectMonitor()
{
    m_portal->selectMonitor(then(&RemoteDesktopPointer::start));
}

void RemoteDesktopPointer::start()
{
    m_statusChanged(
        "Waiting for permission: pick a screen and allow remote interaction in the desktop's dialog");
    m_portal->start([this](const PortalAnswer& answer) { finish(answer); });
}

void RemoteDesktopPointer::finish(const PortalAnswer& answer)
{
    if (answer.kind != PortalAnswer::Kind::done)
        return fail(answer);
    if (!answer.isPointerAllowed)
        return close(dropped("remote interaction was not allowed in the desktop's dialog"));
    if (!answer.stream)
        return close(dropped("no screen was picked in the desktop's dialog"));
    // A token is good for one use, so what has come takes its place even if it is nothing.
    if (const auto error = m_token.set(answer.restoreToken))
        m_statusChanged("The permission cannot be remembered: " + *error);
    grant(*answer.stream);
}

void RemoteDesktopPointer::grant(const ScreenStream& stream)
{
    m_stream = stream;
    m_calls.emplace([this](const PointerCallQueue::Event& event) { send(event); });
    m_state = State::granted;
    m_wasLocked = m_isLocked;
    m_statusChanged("");
}

void RemoteDesktopPointer::fail(const PortalAnswer& answer)
{
    close(dropped(answer.kind == PortalAnswer::Kind::cancelled
            ? "the desktop's dialog was cancelled"
            : "the desktop's portal failed (" + answer.error + ")"));
}

void RemoteDesktopPointer::close(const std::string& sentence)
{
    m_portal->closeSession();
    m_calls.reset();
    m_state = State::closed;
    m_statusChanged(sentence);
}

void RemoteDesktopPointer::lose(const std::string& why, bool isLostByLock)
{
    const bool wasGranted = m_state == State::granted;
    close(dropped(why));
    if (!wasGranted)
        return;
    m_lostAt = m_now();
    m_isLostByLock = isLostByLock;
    restoreWhatLockEnded();
}

void RemoteDesktopPointer::lockChanged(bool isLocked)
{
    m_isLocked = isLocked;
    if (isLocked) {
        m_wasLocked = true;
        m_isLostByLock |= m_lostAt && m_now() - *m_lostAt <= longestFadeOfLockScreen;
    }
    restoreWhatLockEnded();
}

/// What the person ended by the desktop's "Stop sharing" stays ended.
void RemoteDesktopPointer::restoreWhatLockEnded()
{
    if (m_isLostByLock && !m_isLocked && !m_token.value().empty())
        touchesBegin();
}

void RemoteDesktopPointer::moveTo(Point at)
{
    if (m_calls)
        m_calls->add(at);
}

void RemoteDesktopPointer::setLeftButtonDown(bool isDown)
{
    if (m_calls)
        m_calls->add(PointerCallQueue::ButtonChange{isDown});
}

/// Older portals do not report that a session was closed, but refuse its calls.
void RemoteDesktopPointer::send(const PointerCallQueue::Event& event)
{
    const auto answered = [this](const std::string& error) {
        if (!error.empty())
            return lose("the desktop no longer takes touches (" + error + ")", m_wasLocked);
        m_wasLocked = m_isLocked;
        m_calls->answered();
    };
    if (const Point* const at = std::get_if<Point>(&event))
        m_portal->notifyMotion(m_stream.node, *at, answered);
    else
        m_portal->notifyLeftButton(std::get<PointerCallQueue::ButtonChange>(event).isDown, answered);
}

} // namespace companion
