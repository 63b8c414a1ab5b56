// Another program of the desktop: it lays a window over all others, so that taps work nothing, and reads back what the
// X server delivers.
//
//     x11-witness
//
// "ready" comes first. SIGUSR1 has it raise its window and print every event since the last time, as "press 100 200 5031" (place
// in pixels, the server's milliseconds), then "taken". SIGUSR2 has it grab the server until the left button is up, as window
// managers do that move a window: "grabbed", then "released" or, after ten seconds, "gave up".
#include "tests/support/XClient.h"
#include "tests/support/XRecorder.h"

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <thread>

using namespace companion::testing;
using namespace std::chrono_literals;

namespace {

constexpr unsigned widerThanAnyScreen = 8192;
constexpr auto patience = 10s;

void say(const char* what)
{
    std::puts(what);
    std::fflush(stdout);
}

void printEvents(XRecorder& recorder)
{
    for (const XRecorder::Event& event : recorder.take()) {
        if (!event.what.starts_with("key"))
            std::printf("%s %d %d %lu\n", event.what.c_str(), event.x, event.y, event.time);
    }
    say("taken");
}

void grabUntilReleased(XClient& client)
{
    client.grabServer();
    say("grabbed");
    const auto end = std::chrono::steady_clock::now() + patience;
    bool isDown = true;
    while (isDown && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(5ms);
        isDown = client.isLeftButtonDown();
    }
    client.ungrabServer();
    say(isDown ? "gave up" : "released");
}

} // namespace

int main()
{
    sigset_t commands;
    sigemptyset(&commands);
    sigaddset(&commands, SIGUSR1);
    sigaddset(&commands, SIGUSR2);
    sigprocmask(SIG_BLOCK, &commands, nullptr);

    const std::string display = std::getenv("DISPLAY");
    XClient client(display);
    XRecorder recorder(display);
    const unsigned long window = client.openWindow(0, 0, widerThanAnyScreen, widerThanAnyScreen);
    say("ready");
    for (;;) {
        int command = 0;
        sigwait(&commands, &command);
        if (command == SIGUSR2) {
            grabUntilReleased(client);
            continue;
        }
        client.raiseWindow(window);
        printEvents(recorder);
    }
}
