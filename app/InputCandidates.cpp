#include "app/InputCandidates.h"

#include "platform/qt/QtScreen.h"
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

} // namespace

bool isWaylandSession()
{
    return QGuiApplication::platformName().startsWith(QLatin1String("wayland"))
        || qEnvironmentVariableIsSet("WAYLAND_DISPLAY");
}

std::vector<InputCandidate> inputCandidates(const QtScreen& screen, SystemLog& log)
{
    std::vector<InputCandidate> candidates;
    for (const InputWay way : inputWays(isWaylandSession())) {
        switch (way) {
        case InputWay::virtualPointer:
        case InputWay::portal:
            break;
        case InputWay::xtest:
            candidates.push_back({way, [&](const auto& opened) { openXTest(screen, log, opened); }});
            break;
        }
    }
    return candidates;
}

} // namespace companion
