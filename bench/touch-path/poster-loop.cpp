// The touch path without its receive thread and event loop: receive the datagram, simulate the mouse, post, flush.
// Prints its UDP port and goes on until it is ended.
#include "platform/x11/XTestMouseEventPoster.h"
#include "touchback/MouseSimulate.h"
#include "touchback/TouchMessage.h"

#include <arpa/inet.h>
#include <cstdio>
#include <sys/socket.h>
#include <unistd.h>

using namespace companion;

namespace {

constexpr Size screenSize{1280, 800};

class WallClock : public Clock {
    double secondsSince1970() const override
    {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    }
};

class OneScreen : public Screen {
    std::optional<Size> mainScreenSize() const override { return screenSize; }
};

class Sleep : public Pause {
    void pauseFor(std::chrono::microseconds duration) override
    {
        usleep(static_cast<useconds_t>(duration.count()));
    }
};

class NoConsole : public Console {
    void print(std::string_view) override { }
};

int openSocket()
{
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const int size = 4 << 20;
    setsockopt(fd, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (fd < 0 || bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        return -1;
    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length);
    std::printf("port %d\n", ntohs(address.sin_port));
    std::fflush(stdout);
    return fd;
}

} // namespace

int main()
{
    std::string whyNot;
    const auto poster = XTestMouseEventPoster::open(
        "", [] { return ScreenMapping{.size = screenSize}; }, whyNot);
    if (!poster) {
        std::fprintf(stderr, "%s\n", whyNot.c_str());
        return 1;
    }
    WallClock clock;
    OneScreen screen;
    Sleep pause;
    NoConsole console;
    MouseSimulate mouse(clock, screen, pause, *poster, console);

    const int fd = openSocket();
    char datagram[2048];
    for (;;) {
        const ssize_t length = recvfrom(fd, datagram, sizeof datagram, 0, nullptr, nullptr);
        if (length < 0)
            return 1;
        const auto touch = parseTouchMessage({datagram, static_cast<std::size_t>(length)});
        if (touch)
            mouse.initiateMouseEvent(touch->event, touch->xCoordinate, touch->yCoordinate, touch->timeStamp);
        poster->flush();
    }
}
