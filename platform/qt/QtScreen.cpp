#include "platform/qt/QtScreen.h"

#include <QGuiApplication>
#include <QScreen>

namespace companion {

namespace {

Size sizeOf(const QScreen& screen)
{
    return {static_cast<double>(screen.size().width()), static_cast<double>(screen.size().height())};
}

} // namespace

QtScreen::QtScreen(const std::optional<std::string>& screenName)
    : m_screenName(QString::fromStdString(screenName.value_or("")))
{
}

std::optional<Size> QtScreen::mainScreenSize() const
{
    const QScreen* screen = mainScreen();
    if (!screen)
        return std::nullopt;
    return sizeOf(*screen);
}

std::optional<ScreenMapping> QtScreen::mapping() const
{
    const QScreen* screen = mainScreen();
    if (!screen)
        return std::nullopt;
    // Qt divides a screen's size by the device pixel ratio, but leaves its position in root pixels.
    const QPoint origin = screen->geometry().topLeft();
    return ScreenMapping{static_cast<double>(origin.x()), static_cast<double>(origin.y()),
        screen->devicePixelRatio(), sizeOf(*screen)};
}

std::string QtScreen::mainScreenName() const
{
    const QScreen* screen = mainScreen();
    return screen ? screen->name().toStdString() : "";
}

bool QtScreen::isFound() const
{
    return m_screenName.isEmpty() || namedScreen();
}

std::vector<std::string> QtScreen::names()
{
    std::vector<std::string> names;
    for (const QScreen* screen : QGuiApplication::screens())
        names.push_back(screen->name().toStdString());
    return names;
}

QScreen* QtScreen::namedScreen() const
{
    for (QScreen* screen : QGuiApplication::screens()) {
        if (screen->name() == m_screenName)
            return screen;
    }
    return nullptr;
}

QScreen* QtScreen::mainScreen() const
{
    QScreen* named = m_screenName.isEmpty() ? nullptr : namedScreen();
    return named ? named : QGuiApplication::primaryScreen();
}

} // namespace companion
