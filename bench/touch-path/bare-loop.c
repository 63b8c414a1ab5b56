/* The least that a program can do about a touch: receive the datagram, read its two numbers, post a motion, flush.
   Prints its UDP port and goes on until it is ended. */
#include <arpa/inet.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <X11/extensions/XTest.h>
#include <X11/Xlib.h>

static int openSocket(void)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    int size = 4 << 20;
    struct sockaddr_in address;
    socklen_t length = sizeof address;
    memset(&address, 0, sizeof address);
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    if (fd < 0 || bind(fd, (struct sockaddr*)&address, sizeof address) != 0)
        return -1;
    getsockname(fd, (struct sockaddr*)&address, &length);
    printf("port %d\n", ntohs(address.sin_port));
    fflush(stdout);
    return fd;
}

int main(void)
{
    Display* display = XOpenDisplay(NULL);
    int fd = openSocket();
    char datagram[2048];
    if (!display || fd < 0)
        return 1;
    double width = DisplayWidth(display, 0);
    double height = DisplayHeight(display, 0);
    for (;;) {
        ssize_t length = recvfrom(fd, datagram, sizeof datagram - 1, 0, NULL, NULL);
        char* rest = datagram;
        if (length < 0)
            return 1;
        datagram[length] = '\0';
        rest = strchr(datagram, ',');
        if (!rest)
            continue;
        double x = strtod(rest + 1, &rest);
        double y = strtod(rest + (*rest == ','), &rest);
        XTestFakeMotionEvent(
            display, 0, (int)lround(x / 32767 * width), (int)lround(y / 32767 * height), CurrentTime);
        XFlush(display);
    }
}
