// Moves the pointer to the edges of the screen that is named on the command line, as the application maps it: to its four
// corners, to where a finger is just before the last one, and beyond the last one by a whole screen.
#include "platform/qt/QtScreen.h"
#include "platform/x11/XTestMouseEventPoster.h"

#include <cstdio>

#include <QGuiApplication>

using namespace companion;

int main(int argc, char** argv)
{
    const QGuiApplication application(argc, argv);
    const QtScreen screen(argv[1]);
    std::string whyNot;
    const auto poster = XTestMouseEventPoster::open(
        "", [&] { return screen.mapping(); }, whyNot);
    const auto size = screen.mainScreenSize();
    if (!poster || !size || screen.mainScreenName() != argv[1]) {
        std::fprintf(stderr, "no screen %s, or no poster: %s\n", argv[1], whyNot.c_str());
        return 1;
    }
    const auto [width, height] = *size;
    constexpr double almost = 32'740 / 32'767.0;
    for (const Point at : {Point{0, 0}, Point{width, 0}, Point{0, height},
             Point{width * almost, height * almost}, Point{width, height}, Point{2 * width, 2 * height}})
        poster->post(MouseEvent{MouseEventType::leftDragged, at});
    poster->sync();
}
