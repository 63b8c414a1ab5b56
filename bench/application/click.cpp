// Clicks where the pointer is, again and again, and tells how many milliseconds each click took till the screen changed
// 28 pixels below, where the popover's arrow is that a click on an icon shows and hides; "none" when it took longer
// than 5 s.
//
//     bench_click CLICKS
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <thread>

#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

struct Point {
    int x = 0;
    int y = 0;
};

Point belowPointer(Display* display)
{
    Window root = 0;
    Window child = 0;
    Point pointer;
    Point inWindow;
    unsigned buttons = 0;
    XQueryPointer(display, DefaultRootWindow(display), &root, &child, &pointer.x, &pointer.y, &inWindow.x,
        &inWindow.y, &buttons);
    return {pointer.x, pointer.y + 28};
}

unsigned long pixel(Display* display, Point at)
{
    XImage* image = XGetImage(display, DefaultRootWindow(display), at.x, at.y, 1, 1, AllPlanes, ZPixmap);
    const unsigned long color = XGetPixel(image, 0, 0);
    XDestroyImage(image);
    return color;
}

bool waitForChange(Display* display, Point at, unsigned long before, Clock::time_point deadline)
{
    while (pixel(display, at) == before) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(500us);
    }
    return true;
}

std::optional<double> click(Display* display, Point probe)
{
    const unsigned long before = pixel(display, probe);
    const auto start = Clock::now();
    XTestFakeButtonEvent(display, 1, True, CurrentTime);
    XTestFakeButtonEvent(display, 1, False, CurrentTime);
    XFlush(display);
    if (!waitForChange(display, probe, before, start + 5s))
        return std::nullopt;
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display || argc != 2)
        return 2;
    const Point probe = belowPointer(display);
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        if (const auto milliseconds = click(display, probe))
            std::printf("%.1f\n", *milliseconds);
        else
            std::puts("none");
        std::this_thread::sleep_for(450ms); // a double click is something else
    }
    XCloseDisplay(display);
}
