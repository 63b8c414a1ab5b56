/* The least that a program can do about a touch: receive the datagram, read its two numbers, post a motion, flush.
   Prints its UDP port and goes on until it is ended. */
#include "bare-socket.h"

#include <math.h>
#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>

int main(void)
{
    Display* display = XOpenDisplay(NULL);
    int fd = openSocket();
    double x, y;
    if (!display || fd < 0)
        return 1;
    double width = DisplayWidth(display, 0);
    double height = DisplayHeight(display, 0);
    for (;;) {
        if (!receiveTouch(fd, &x, &y))
            continue;
        XTestFakeMotionEvent(display, 0, (int)lround(x * width), (int)lround(y * height), CurrentTime);
        XFlush(display);
    }
}
