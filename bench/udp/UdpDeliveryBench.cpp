// How long a touch datagram takes from its sending to the code that handles it, one in flight: a bare recvfrom loop,
// the UDP socket with the plainest main queue there is, and with the one of the application. Rounds of the three are
// interleaved, since the machine's own drift is larger than what is measured; only the ratios travel.
//
// bench_udp_delivery [ROUNDS [NAME]]      with a NAME (bare, plain or qt) that one alone, for callgrind

#include "platform/posix/PosixAsyncUdpSocket.h"
#include "platform/qt/QtMainQueue.h"
#include "tests/support/ThreadMainQueue.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <netinet/in.h>
#include <QCoreApplication>
#include <string>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace companion;
using SteadyClock = std::chrono::steady_clock;

constexpr int datagramsARound = 1'000;

std::int64_t nanoseconds()
{
    return SteadyClock::now().time_since_epoch().count();
}

sockaddr_in loopback(std::uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// Sends the next datagram, as long as a touch record and with its time in it, once the one before was handled.
class Sender {
public:
    explicit Sender(std::uint16_t port)
        : m_address(loopback(port))
        , m_thread([this] { run(); })
    {
    }
    ~Sender()
    {
        m_thread.join();
        close(m_socket);
    }

    void noteHandled()
    {
        m_handled.fetch_add(1);
        m_handled.notify_one();
    }

private:
    void run()
    {
        for (int i = 0; i < datagramsARound; ++i) {
            char record[32] = "MOVE,16383,16383,";
            const std::int64_t now = nanoseconds();
            std::memcpy(record + 20, &now, sizeof now);
            sendto(m_socket, record, sizeof record, 0, reinterpret_cast<const sockaddr*>(&m_address),
                sizeof m_address);
            m_handled.wait(i);
        }
    }

    const int m_socket = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const sockaddr_in m_address;
    std::atomic<int> m_handled = 0;
    std::thread m_thread;
};

std::int64_t ageOf(const char* record)
{
    std::int64_t sent = 0;
    std::memcpy(&sent, record + 20, sizeof sent);
    return nanoseconds() - sent;
}

using Ages = std::vector<std::int64_t>;

void runBare(Ages& ages)
{
    const int receiver = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t size = sizeof address;
    bind(receiver, reinterpret_cast<const sockaddr*>(&address), size);
    getsockname(receiver, reinterpret_cast<sockaddr*>(&address), &size);
    Sender sender(ntohs(address.sin_port));
    for (int i = 0; i < datagramsARound; ++i) {
        char record[65'536];
        sockaddr_in from{};
        socklen_t fromSize = sizeof from;
        recvfrom(receiver, record, sizeof record, 0, reinterpret_cast<sockaddr*>(&from), &fromSize);
        ages.push_back(ageOf(record));
        sender.noteHandled();
    }
    close(receiver);
}

class NoLog : public SystemLog {
public:
    void log(std::string_view) override { }
};

class Handler : public AsyncUdpSocketDelegate {
public:
    explicit Handler(Ages& ages)
        : m_ages(ages)
    {
    }

    void udpSocketDidReceiveData(AsyncUdpSocket&, std::string_view data, const UdpSender&) override
    {
        m_ages.push_back(ageOf(data.data()));
        ++count;
        sender->noteHandled();
        if (isDone() && whenDone)
            whenDone();
    }

    bool isDone() const { return count == datagramsARound; }

    Sender* sender = nullptr;
    int count = 0;
    std::function<void()> whenDone;

private:
    Ages& m_ages;
};

void runSocket(MainQueue& queue, Handler& handler, const std::function<void()>& runUntilDone)
{
    NoLog log;
    PosixAsyncUdpSocket socket(handler, "client udp socket", queue, log, {});
    socket.bindToPort(0);
    socket.beginReceiving();
    Sender sender(socket.localPort());
    handler.sender = &sender;
    runUntilDone();
}

void runPlainQueue(Ages& ages)
{
    testing::ThreadMainQueue queue;
    Handler handler(ages);
    runSocket(queue, handler, [&] { queue.runUntil([&] { return handler.isDone(); }); });
}

void runQtQueue(Ages& ages)
{
    QtMainQueue queue;
    Handler handler(ages);
    handler.whenDone = [] { QCoreApplication::quit(); };
    runSocket(queue, handler, [] { QCoreApplication::exec(); });
}

double percentile(Ages& ages, double part)
{
    const auto place =
        ages.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(ages.size() - 1));
    std::nth_element(ages.begin(), place, ages.end());
    return static_cast<double>(*place) / 1'000;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20;
    const std::string only = argc > 2 ? argv[2] : "";

    struct Contender {
        const char* name;
        void (*run)(Ages&);
        Ages ages;
    };
    std::array<Contender, 3> contenders{
        {{"bare", runBare, {}}, {"plain", runPlainQueue, {}}, {"qt", runQtQueue, {}}}};
    for (int round = 0; round < rounds; ++round) {
        for (Contender& contender : contenders) {
            if (only.empty() || only == contender.name)
                contender.run(contender.ages);
        }
    }
    for (Contender& contender : contenders) {
        if (!contender.ages.empty())
            std::printf("%-6s p50 %7.1f us   p99 %7.1f us   %zu datagrams\n", contender.name,
                percentile(contender.ages, 0.5), percentile(contender.ages, 0.99), contender.ages.size());
    }
    return 0;
}
