// From the start of a program to its first paint, for several programs in turns, against the first of them: an empty
// Qt window, and one with a line of text.
//
//     bench_start [--rounds N] PROGRAM...
//
// There is no window manager and no session bus, so that neither is measured.
#include "bench/start/PaintWatcher.h"
#include "tests/support/XvfbServer.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>
#include <string>
#include <vector>

using namespace companion;
using namespace companion::bench;
using namespace std::chrono_literals;
using companion::testing::ChildProcess;

namespace {

struct Contender {
    std::string program;
    std::vector<double> milliseconds;
};

double percentile(std::vector<double> values, double part)
{
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(part * static_cast<double>(values.size() - 1))];
}

double startOnce(const std::string& program, const std::string& display)
{
    PaintWatcher watcher(display);
    const auto start = std::chrono::steady_clock::now();
    ChildProcess process({program},
        {{"DISPLAY", display}, {"QT_QPA_PLATFORM", "xcb"},
            {"DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent"}});
    const auto painted = watcher.firstPaint(start + 10s);
    if (!painted)
        throw std::runtime_error(program + " painted nothing: " + process.output());
    return std::chrono::duration<double, std::milli>(*painted - start).count();
}

void run(int rounds, std::vector<Contender>& contenders)
{
    const testing::XvfbServer xvfb;
    const PaintWatcher keeper(xvfb.display()); // the server starts anew when its last client goes
    for (int round = -1; round < rounds; ++round) {
        for (Contender& contender : contenders) {
            const double milliseconds = startOnce(contender.program, xvfb.display());
            if (round >= 0) // the first one only reads the files
                contender.milliseconds.push_back(milliseconds);
        }
    }
    const double limit = percentile(contenders[0].milliseconds, 0.5);
    for (const Contender& contender : contenders)
        std::printf("%7.1f ms  x %.2f  (fastest %.1f)  %s\n", percentile(contender.milliseconds, 0.5),
            percentile(contender.milliseconds, 0.5) / limit, percentile(contender.milliseconds, 0),
            contender.program.c_str());
}

} // namespace

int main(int argc, char** argv)
{
    try {
        int rounds = 21;
        std::vector<Contender> contenders{{EMPTY_WINDOW, {}}, {TEXT_WINDOW, {}}};
        for (int i = 1; i < argc; ++i) {
            if (std::string(argv[i]) == "--rounds" && i + 1 < argc)
                rounds = std::stoi(argv[++i]);
            else
                contenders.push_back({argv[i], {}});
        }
        run(rounds, contenders);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_start: %s\n", error.what());
        return 2;
    }
}
