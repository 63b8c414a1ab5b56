// Clicks where the pointer is, again and again, and tells how many milliseconds each click took till a window appeared
// or went, as the click of a button that shows and hides a popover does; "none" when it took longer than 5 s.
//
//     bench_click CLICKS
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <poll.h>
#include <thread>

#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

namespace {

bool waitForWindow(Display* display, Clock::time_point deadline)
{
    while (true) {
        while (XPending(display) > 0) {
            XEvent event;
            XNextEvent(display, &event);
            if (event.type == MapNotify || event.type == UnmapNotify)
                return true;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd waiting{ConnectionNumber(display), POLLIN, 0};
        if (left <= 0ms || poll(&waiting, 1, static_cast<int>(left.count())) <= 0)
            return false;
    }
}

std::optional<double> click(Display* display)
{
    const auto start = Clock::now();
    XTestFakeButtonEvent(display, 1, True, CurrentTime);
    XTestFakeButtonEvent(display, 1, False, CurrentTime);
    XFlush(display);
    if (!waitForWindow(display, start + 5s))
        return std::nullopt;
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

} // namespace

int main(int argc, char** argv)
{
    Display* display = XOpenDisplay(nullptr);
    if (!display || argc != 2)
        return 2;
    XSelectInput(display, DefaultRootWindow(display), SubstructureNotifyMask);
    XSync(display, False);
    for (int i = 0; i < std::atoi(argv[1]); ++i) {
        if (const auto milliseconds = click(display))
            std::printf("%.1f\n", *milliseconds);
        else
            std::puts("none");
        std::this_thread::sleep_for(450ms); // a double click is something else
        XSync(display, True);
    }
    XCloseDisplay(display);
}
