#include "app/InputCandidates.h"

#include "platform/PointerEventPoster.h"
#include "platform/portal/DBusRemoteDesktopPortal.h"
#include "platform/portal/RemoteDesktopPointer.h"
#include "platform/qt/QtScreen.h"
#include "platform/wayland/VirtualPointerDevice.h"
#include "platform/x11/XTestMouseEventPoster.h"

#include <chrono>
#include <QGuiApplication>
#include <QStyleHints>

namespace companion {

namespace {

/// When programs take two presses for a double click, as far as this desktop tells.
ClickRules desktopClickRules()
{
    ClickRules rules;
    rules.interval = std::chrono::milliseconds(QGuiApplication::styleHints()->mouseDoubleClickInterval());
    rules.distance = QGuiApplication::styleHints()->mouseDoubleClickDistance();
    return rules;
}

void openXTest(const QtScreen& screen, SystemLog& log, const InputCandidate::Opened& opened)
{
    std::string whyNot;
    auto poster = XTestMouseEventPoster::open(
        "", [&screen] { return screen.mapping(); }, whyNot, desktopClickRules);
    if (poster)
        poster->setLog(log);
    opened(std::move(poster), whyNot);
}

/// Whether there is a portal is known only when the bus has answered.
class PortalOpening {
public:
    PortalOpening(const QtScreen& screen, RestoreToken token, InputInjection::StatusChanged statusChanged)
        : m_screen(screen)
        , m_token(std::move(token))
        , m_statusChanged(std::move(statusChanged))
    {
    }

    void open(InputCandidate::Opened opened)
    {
        m_portal = std::make_unique<DBusRemoteDesktopPortal>();
        m_portal->readVersion([this, opened = std::move(opened)](unsigned version, const std::string& error) {
            opened(version > 0 ? makePoster() : nullptr, "no RemoteDesktop portal: " + error);
        });
    }

private:
    std::unique_ptr<MouseEventPoster> makePoster()
    {
        auto pointer =
            std::make_unique<RemoteDesktopPointer>(std::move(m_portal), m_screen, m_token, m_statusChanged);
        return std::make_unique<PointerEventPoster>(std::move(pointer), m_screen, desktopClickRules);
    }

    const QtScreen& m_screen;
    const RestoreToken m_token;
    const InputInjection::StatusChanged m_statusChanged;
    std::unique_ptr<DBusRemoteDesktopPortal> m_portal;
};

void openVirtualPointer(const QtScreen& screen, SystemLog& log, const InputCandidate::Opened& opened)
{
    std::string whyNot;
    auto device = VirtualPointerDevice::open(
        "", [&screen] { return screen.mapping(); }, [&screen] { return screen.mainScreenName(); }, log,
        whyNot);
    if (device)
        opened(std::make_unique<PointerEventPoster>(std::move(device), screen, desktopClickRules), whyNot);
    else
        opened(nullptr, whyNot);
}

} // namespace

bool isWaylandSession()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
        || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

std::vector<InputCandidate> inputCandidates(const QtScreen& screen, SystemLog& log,
    bool remembersScreenAccess, const InputInjection::StatusChanged& statusChanged)
{
    std::vector<InputCandidate> candidates;
    for (const InputWay way : inputWays(isWaylandSession())) {
        switch (way) {
        case InputWay::virtualPointer:
            candidates.push_back({way, [&](const auto& opened) { openVirtualPointer(screen, log, opened); }});
            break;
        case InputWay::portal: {
            RestoreToken token =
                remembersScreenAccess ? RestoreToken(RestoreToken::defaultFile()) : RestoreToken();
            auto opening = std::make_shared<PortalOpening>(screen, std::move(token), statusChanged);
            candidates.push_back({way, [opening](const auto& opened) { opening->open(opened); }});
            break;
        }
        case InputWay::xtest:
            candidates.push_back({way, [&](const auto& opened) { openXTest(screen, log, opened); }});
            break;
        }
    }
    return candidates;
}

} // namespace companion
