#include "platform/qt/QtScreen.h"

#include <cstdio>

#include <QGuiApplication>

/// Prints how the main screen, or the one named on the command line, lies in the root window.
int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const companion::QtScreen screen(argc > 1 ? std::optional<std::string>(argv[1]) : std::nullopt);
    const auto size = screen.mainScreenSize();
    const auto mapping = screen.mapping();
    if (!size || !mapping)
        return 1;
    std::printf("size %gx%g origin %g,%g scale %g mapped %gx%g\n", size->width, size->height,
        mapping->originX, mapping->originY, mapping->scale, mapping->size.width, mapping->size.height);
    return 0;
}
