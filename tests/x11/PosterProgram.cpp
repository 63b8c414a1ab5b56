// A program that presses the left button at 100,200, says "held" and ends in the way that it is told: by returning
// from main ("destroy"), by returning once a signal has come ("signal"), by a fatal error or an exception in another
// thread ("fatal", "exception"), or never ("hang").
#include "platform/FatalError.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/x11/XTestMouseEventPoster.h"

#include <cstdio>
#include <poll.h>
#include <stdexcept>
#include <string>
#include <thread>
#include <unistd.h>

using namespace companion;

int main(int, char** argv)
{
    const std::string way = argv[1];
    makeUncaughtExceptionsFatal();
    SignalDescriptor signals;
    std::string whyNot;
    auto poster = XTestMouseEventPoster::open(
        "", [] { return ScreenMapping{}; }, whyNot);
    if (!poster) {
        std::fprintf(stderr, "%s\n", whyNot.c_str());
        return 1;
    }
    setFatalErrorHandler([&](std::string_view) { poster->releaseHeldButton(); });

    poster->post(MouseEvent{MouseEventType::leftDown, {100, 200}, 0});
    poster->sync();
    std::puts("held");
    std::fflush(stdout);

    if (way == "fatal once told")
        std::getchar();
    if (way.starts_with("fatal"))
        std::thread([] { fatalError("for the test"); }).join();
    if (way == "exception")
        std::thread([] { throw std::runtime_error("for the test"); }).join();
    if (way == "signal") {
        pollfd waiting{signals.fd(), POLLIN, 0};
        poll(&waiting, 1, -1);
    }
    while (way == "hang")
        pause();
}
