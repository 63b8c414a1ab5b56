// From the datagram of a touch to the motion that another X client sees: several programs, in turns, in one run,
// against the bare loop. Only the ratios mean something on another machine.
//
//     bench_touch_path [--display :N] [--rounds N] [--moves N] [--peer NAME=PORT[:PID]]...
//     bench_touch_path --wayland yes [--rounds N] [--moves N] --peer NAME=PORT[:PID]...
//     bench_touch_path --wayland count
//
// Without --display a private Xvfb of 1280 × 800 is started. With --wayland the other client is one of the compositor
// that $WAYLAND_DISPLAY names, and the first peer is the limit. A --peer is a program that runs already, takes touch
// records on that UDP port of loopback and posts to the same display; with its process id, its processor time is
// told as well. With --wayland count it is only counted what comes to the other client: "MOTIONS PRESSES RELEASES" is
// printed whenever a second has brought nothing new, and goes on until it is ended.
#include "bench/touch-path/Measurement.h"
#include "bench/touch-path/WaylandPointerObserver.h"
#include "bench/touch-path/X11PointerObserver.h"
#include "tests/support/XvfbServer.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

using namespace companion;
using namespace companion::bench;
using namespace std::chrono_literals;
using companion::testing::ChildProcess;

namespace {

struct Peer {
    std::string name;
    pid_t pid = 0;
    std::function<std::unique_ptr<MoveSender>()> connect;
    std::unique_ptr<ChildProcess> process;
};

struct Options {
    std::string display;
    std::string wayland;
    int rounds = 9;
    int moves = 2000;
    std::vector<std::string> peers;
};

struct Mode {
    const char* name;
    std::function<Result(Measurement&, int moves)> run;
    int movesFactor = 1;
};

const std::vector<Mode> modes{
    {"one in flight", [](Measurement& m, int moves) { return m.oneInFlight(moves); }},
    {"1,000 a second", [](Measurement& m, int moves) { return m.atRate(moves, 1ms); }},
    {"64 in flight", [](Measurement& m, int moves) { return m.inFlight(moves, 64); }, 20},
};

const std::vector<Mode> waylandModes{
    modes[0],
    {"240 a second", [](Measurement& m, int moves) { return m.atRate(moves, 1'000'000'000ns / 240); }},
};

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i + 1 < argc; i += 2) {
        const std::string name = argv[i];
        if (name == "--display")
            options.display = argv[i + 1];
        else if (name == "--wayland")
            options.wayland = argv[i + 1];
        else if (name == "--rounds")
            options.rounds = std::stoi(argv[i + 1]);
        else if (name == "--moves")
            options.moves = std::stoi(argv[i + 1]);
        else if (name == "--peer")
            options.peers.push_back(argv[i + 1]);
        else
            throw std::invalid_argument("unknown option " + name);
    }
    if (argc % 2 == 0)
        throw std::invalid_argument("an option without its value");
    return options;
}

// As programs of a desktop are: Linux schedules the programs of one session as a group (sched(7), autogroup), and those
// of the measuring program's own session would be woken with less delay than any other.
std::vector<std::string> inSessionOfItsOwn(std::vector<std::string> command)
{
    command.insert(command.begin(), "setsid");
    return command;
}

Peer startLoop(const std::string& name, const std::string& program, const std::string& display)
{
    Peer peer{name, 0, {},
        std::make_unique<ChildProcess>(
            inSessionOfItsOwn({program}), std::map<std::string, std::string>{{"DISPLAY", display}})};
    if (!peer.process->waitForOutput("port ") || !peer.process->waitForOutput("\n"))
        throw std::runtime_error(name + " does not start: " + peer.process->output());
    const auto port = static_cast<std::uint16_t>(std::stoi(peer.process->output().substr(5)));
    peer.pid = peer.process->pid();
    peer.connect = [port] { return makeTouchSender(port); };
    return peer;
}

// TigerVNC's server for an existing display. It takes no port of its own choice: some are tried.
std::optional<Peer> startVnc(const std::string& display)
{
    if (!testing::isInstalled("X0tigervnc"))
        return std::nullopt;
    const int firstPort = 20000 + static_cast<int>(getpid() % 20000);
    for (int port = firstPort; port < firstPort + 10; ++port) {
        Peer peer{"X0tigervnc", 0, {},
            std::make_unique<ChildProcess>(inSessionOfItsOwn({"X0tigervnc", "-display", display, "-rfbport",
                std::to_string(port), "-SecurityTypes", "None", "-localhost", "-AlwaysShared"}))};
        if (!peer.process->waitForOutput("Listening for VNC connections", 3s))
            continue;
        peer.pid = peer.process->pid();
        peer.connect = [port] { return makeRfbSender(static_cast<std::uint16_t>(port)); };
        return peer;
    }
    return std::nullopt;
}

Peer runningPeer(const std::string& text)
{
    const auto equals = text.find('=');
    const auto colon = text.find(':', equals);
    if (equals == std::string::npos)
        throw std::invalid_argument("--peer NAME=PORT[:PID]");
    const auto port = static_cast<std::uint16_t>(std::stoi(text.substr(equals + 1)));
    const pid_t pid = colon == std::string::npos ? 0 : std::stoi(text.substr(colon + 1));
    return {text.substr(0, equals), pid, [port] { return makeTouchSender(port); }, nullptr};
}

// Nanoseconds on a processor so far, of all its threads (proc(5), schedstat).
double processorTime(pid_t pid)
{
    double sum = 0;
    std::error_code error;
    for (const auto& thread :
        std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", error)) {
        double nanoseconds = 0;
        std::ifstream(thread.path() / "schedstat") >> nanoseconds;
        sum += nanoseconds;
    }
    return sum;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

// What a busy machine does to one round it does to all that take part in it, so that rounds are compared one by one.
double medianRatio(const std::vector<double>& values, const std::vector<double>& limits)
{
    std::vector<double> ratios;
    for (std::size_t i = 0; i < values.size(); ++i)
        ratios.push_back(values[i] / limits[i]);
    return median(ratios);
}

struct Row {
    std::vector<double> p50, p99, rate, cpu;
    int lost = 0;
};

void measureOnce(const Mode& mode, const Peer& peer, PointerObserver& observer, int moves, Row& row)
{
    const auto sender = peer.connect();
    Measurement measurement(observer, *sender);
    measurement.oneInFlight(100); // warm
    const double before = peer.pid ? processorTime(peer.pid) : 0;
    const Result result = mode.run(measurement, moves * mode.movesFactor);
    const double spent = peer.pid ? processorTime(peer.pid) - before : 0;
    row.p50.push_back(result.p50);
    row.p99.push_back(result.p99);
    row.rate.push_back(result.eventsPerSecond);
    row.cpu.push_back(spent / 1000 / (moves * mode.movesFactor));
    row.lost += result.lost;
}

void measure(
    const Mode& mode, const std::vector<Peer>& peers, PointerObserver& observer, const Options& options)
{
    std::vector<Row> rows(peers.size());
    for (int round = 0; round < options.rounds; ++round) {
        for (std::size_t i = 0; i < peers.size(); ++i)
            measureOnce(mode, peers[i], observer, options.moves, rows[i]);
    }
    std::printf("\n%s (medians of %d rounds of %d moves; x: of the ratios to the %s)\n", mode.name,
        options.rounds, options.moves * mode.movesFactor, peers[0].name.c_str());
    std::printf("%-14s %9s %6s %9s %6s %10s %6s %8s %6s\n", "", "p50 us", "x", "p99 us", "x", "events/s", "x",
        "cpu us", "lost");
    const Row& limit = rows[0];
    for (std::size_t i = 0; i < peers.size(); ++i) {
        const Row& row = rows[i];
        std::printf("%-14s %9.1f %6.2f %9.1f %6.2f %10.0f %6.2f %8.1f %6d\n", peers[i].name.c_str(),
            median(row.p50), medianRatio(row.p50, limit.p50), median(row.p99),
            medianRatio(row.p99, limit.p99), median(row.rate), medianRatio(row.rate, limit.rate),
            median(row.cpu), row.lost);
    }
}

void runOnX11(const Options& options)
{
    std::unique_ptr<testing::XvfbServer> xvfb;
    if (options.display.empty())
        xvfb = std::make_unique<testing::XvfbServer>("1280x800");
    const std::string display = xvfb ? xvfb->display() : options.display;

    std::vector<Peer> peers;
    peers.push_back(startLoop("bare loop", BARE_LOOP, display));
    peers.push_back(startLoop("poster loop", POSTER_LOOP, display));
    if (auto vnc = startVnc(display))
        peers.push_back(std::move(*vnc));
    else
        std::puts("X0tigervnc (package tigervnc-scraping-server) is missing: measured without it");
    for (const std::string& peer : options.peers)
        peers.push_back(runningPeer(peer));

    X11PointerObserver observer(display);
    for (const Mode& mode : modes)
        measure(mode, peers, observer, options);
}

void runOnWayland(const Options& options)
{
    std::vector<Peer> peers;
    for (const std::string& peer : options.peers)
        peers.push_back(runningPeer(peer));
    if (peers.empty())
        throw std::invalid_argument("--wayland without a --peer");

    WaylandPointerObserver observer;
    for (const Mode& mode : waylandModes)
        measure(mode, peers, observer, options);
}

// Without a line for each event, which could make it so slow that the compositor ends its connection.
void countOnWayland()
{
    WaylandPointerObserver observer;
    int motions = 0;
    for (bool hasNews = true;;) {
        if (observer.next(std::chrono::steady_clock::now() + 1s)) {
            ++motions;
            hasNews = true;
        } else if (std::exchange(hasNews, false)) {
            std::printf("%d %d %d\n", motions, observer.presses(), observer.releases());
            std::fflush(stdout);
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    try {
        const Options options = parse(argc, argv);
        if (options.wayland == "count")
            countOnWayland();
        options.wayland.empty() ? runOnX11(options) : runOnWayland(options);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bench_touch_path: %s\n", error.what());
        return 2;
    }
}
