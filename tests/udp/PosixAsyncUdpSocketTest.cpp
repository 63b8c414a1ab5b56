#include "platform/posix/PosixAsyncUdpSocket.h"

#include "platform/testing/FakeLog.h"
#include "tests/support/ThreadMainQueue.h"
#include "tests/udp/UdpPeer.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <ctime>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <netinet/in.h>
#include <stdexcept>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

struct Received {
    std::string data;
    UdpSender from;
};

class RecordingDelegate : public AsyncUdpSocketDelegate {
public:
    void udpSocketDidReceiveData(AsyncUdpSocket&, std::string_view data, const UdpSender& from) override
    {
        ++count;
        if (keepsAll)
            received.push_back({std::string(data), from});
        if (whileDelivering)
            whileDelivering();
    }

    std::vector<Received> received;
    std::size_t count = 0;
    bool keepsAll = true;
    std::function<void()> whileDelivering;
};

std::vector<std::string> threadNames()
{
    std::vector<std::string> names;
    DIR* tasks = opendir("/proc/self/task");
    while (const dirent* entry = readdir(tasks)) {
        std::ifstream comm("/proc/self/task/" + std::string(entry->d_name) + "/comm");
        std::string name;
        if (std::getline(comm, name))
            names.push_back(name);
    }
    closedir(tasks);
    return names;
}

/// How often the receive thread has gone to sleep so far.
std::size_t sleepsOfReceiveThread()
{
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream status(task.path() / "status");
        std::string line;
        std::getline(status, line);
        if (!line.ends_with("\tclient udp sock"))
            continue;
        while (std::getline(status, line)) {
            if (line.starts_with("voluntary_ctxt_switches:"))
                return std::stoul(line.substr(line.find('\t')));
        }
    }
    throw std::runtime_error("there is no receive thread");
}

std::size_t residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    statm >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

/// The descriptor of this process that is bound to the UDP port.
int descriptorBoundTo(std::uint16_t port)
{
    for (int fd = 3; fd < 256; ++fd) {
        sockaddr_in6 address{};
        socklen_t size = sizeof address;
        if (getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size) == 0
            && ntohs(address.sin6_port) == port)
            return fd;
    }
    return -1;
}

int socketOption(int descriptor, int option)
{
    int value = -1;
    socklen_t size = sizeof value;
    getsockopt(descriptor, SOL_SOCKET, option, &value, &size);
    return value;
}

/// Until the receive thread has taken everything out of the system's buffer.
bool waitUntilDrained(int descriptor)
{
    const auto deadline = SteadyClock::now() + 10s;
    int bytes = 1;
    while (ioctl(descriptor, FIONREAD, &bytes) == 0 && bytes > 0 && SteadyClock::now() < deadline)
        std::this_thread::sleep_for(1ms);
    std::this_thread::sleep_for(20ms); // for the batch that it has in its hands
    return bytes == 0;
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

} // namespace

class PosixAsyncUdpSocketTest : public ::testing::Test {
protected:
    std::unique_ptr<PosixAsyncUdpSocket> makeSocket()
    {
        return std::make_unique<PosixAsyncUdpSocket>(
            m_delegate, "client udp socket", m_queue, m_log, [this] { ++m_slices; });
    }

    void openOnFreePort()
    {
        ASSERT_EQ(m_socket->enableBroadcast(true), std::nullopt);
        ASSERT_EQ(m_socket->bindToPort(0), std::nullopt);
        m_port = m_socket->localPort();
        ASSERT_NE(m_port, 0);
        ASSERT_EQ(m_socket->beginReceiving(), std::nullopt);
    }

    bool waitForCount(std::size_t count)
    {
        return m_queue.runUntil([&] { return m_delegate.count >= count; });
    }

    /// Until the receive thread has handed the main queue a job.
    bool waitForPendingJob()
    {
        const auto deadline = SteadyClock::now() + 10s;
        while (m_queue.pending() == 0 && SteadyClock::now() < deadline)
            std::this_thread::sleep_for(1ms);
        return m_queue.pending() == 1;
    }

    std::size_t countLogLines(const std::string& part)
    {
        const auto& lines = m_transcript.lines();
        return static_cast<std::size_t>(std::count_if(lines.begin(), lines.end(),
            [&](const std::string& line) { return line.find(part) != std::string::npos; }));
    }

    Transcript m_transcript;
    FakeSystemLog m_log{m_transcript};
    ThreadMainQueue m_queue;
    RecordingDelegate m_delegate;
    int m_slices = 0;
    std::unique_ptr<PosixAsyncUdpSocket> m_socket = makeSocket();
    std::uint16_t m_port = 0;
    UdpPeer m_peer;
};

TEST_F(PosixAsyncUdpSocketTest, DeliversADatagramWithItsSenderAsPlainIPv4Text)
{
    openOnFreePort();
    ASSERT_TRUE(m_peer.bindTo(0));
    m_peer.send("DOWN,16383,16383,1;", m_port);
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(m_delegate.received[0].data, "DOWN,16383,16383,1;");
    EXPECT_EQ(m_delegate.received[0].from.host, "127.0.0.1");
    EXPECT_EQ(m_delegate.received[0].from.port, m_peer.port());
    EXPECT_EQ(m_slices, 1);
}

TEST_F(PosixAsyncUdpSocketTest, TellsTwoSendersApartThatTakeTurns)
{
    openOnFreePort();
    UdpPeer other;
    ASSERT_TRUE(m_peer.bindTo(0));
    ASSERT_TRUE(other.bindTo(0));
    for (std::size_t i = 0; i < 6; ++i) {
        UdpPeer& peer = i % 2 ? other : m_peer;
        peer.send("x", m_port);
        ASSERT_TRUE(waitForCount(i + 1));
        EXPECT_EQ(m_delegate.received[i].from.port, peer.port());
    }
}

TEST_F(PosixAsyncUdpSocketTest, DeliversADatagramThatCameByIPv6)
{
    openOnFreePort();
    UdpPeer peer(UdpPeer::Family::ipv6);
    if (!peer.bindTo(0))
        GTEST_SKIP() << "no IPv6 loopback address here";
    peer.send("UP,1,2,3;", m_port);
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(m_delegate.received[0].from.host, "::1");
    EXPECT_EQ(m_delegate.received[0].from.port, peer.port());
}

TEST_F(PosixAsyncUdpSocketTest, DeliversAnEmptyAndA65507ByteDatagram)
{
    openOnFreePort();
    std::string longest(65'507, '\0');
    for (std::size_t i = 0; i < longest.size(); ++i)
        longest[i] = static_cast<char>(i * 7);
    m_peer.send("", m_port);
    m_peer.send(longest, m_port);
    m_peer.send("", m_port);
    ASSERT_TRUE(waitForCount(3));
    EXPECT_EQ(m_delegate.received[0].data, "");
    EXPECT_TRUE(m_delegate.received[1].data == longest);
    EXPECT_EQ(m_delegate.received[2].data, "");
}

TEST_F(PosixAsyncUdpSocketTest, ABurstOf10000LosesNothingAndKeepsItsOrder)
{
    if (m_socket->receiveBuffer() < PosixAsyncUdpSocket::wantedReceiveBuffer)
        GTEST_SKIP() << "the system grants " << m_socket->receiveBuffer() << " bytes of receive buffer only";
    openOnFreePort();
    std::thread sender([&] {
        for (int i = 0; i < 10'000; ++i)
            m_peer.send("MOVE,16383," + std::to_string(i) + ",1712345678321;", m_port);
    });
    EXPECT_TRUE(waitForCount(10'000));
    sender.join();
    int disordered = 0;
    for (std::size_t i = 0; i < m_delegate.received.size(); ++i)
        disordered +=
            m_delegate.received[i].data == "MOVE,16383," + std::to_string(i) + ",1712345678321;" ? 0 : 1;
    EXPECT_EQ(disordered, 0);
}

TEST_F(PosixAsyncUdpSocketTest, ABlockedMainThreadOf2SecondsLosesNoneOf2000AndOneWakeUpWaits)
{
    openOnFreePort();
    m_queue.runFor(20ms);
    std::thread sender([&] {
        for (int i = 0; i < 2'000; ++i) {
            m_peer.send("MOVE," + std::to_string(i), m_port);
            std::this_thread::sleep_for(900us);
        }
    });
    std::this_thread::sleep_for(2s);
    sender.join();
    EXPECT_EQ(m_queue.pending(), 1u);
    EXPECT_TRUE(waitForCount(2'000));
    EXPECT_LE(m_queue.mostPending(), 1u);
    EXPECT_EQ(m_delegate.received.back().data, "MOVE,1999");
}

TEST_F(PosixAsyncUdpSocketTest, NothingIsLostOrOvertakenWhereverTheMainThreadStops)
{
    openOnFreePort();
    constexpr std::size_t count = 3'000;
    std::thread sender([&] {
        for (std::size_t i = 0; i < count; ++i) {
            m_peer.send(std::to_string(i), m_port);
            std::this_thread::sleep_for(200us);
        }
    });
    unsigned pause = 1;
    while (m_delegate.count < count && m_queue.runUntil([&] { return m_delegate.count % 37 == 36; }, 1s)) {
        pause = pause * 75 % 65'537; // of no particular order
        std::this_thread::sleep_for(std::chrono::milliseconds(pause % 60));
        m_queue.runFor(std::chrono::milliseconds(pause % 11));
    }
    sender.join();
    ASSERT_TRUE(waitForCount(count));
    for (std::size_t i = 0; i < count; ++i)
        ASSERT_EQ(m_delegate.received[i].data, std::to_string(i));
}

TEST_F(PosixAsyncUdpSocketTest, ReportsWhenADatagramArrivedHoweverLongItThenWaited)
{
    openOnFreePort();
    const auto sent = SteadyClock::now();
    m_peer.send("x", m_port);
    ASSERT_TRUE(waitUntilDrained(descriptorBoundTo(m_port)));
    const auto drained = SteadyClock::now();
    ASSERT_TRUE(waitForCount(1));
    EXPECT_GE(m_delegate.received[0].from.receivedAt, sent);
    EXPECT_LE(m_delegate.received[0].from.receivedAt, drained);
}

TEST_F(PosixAsyncUdpSocketTest, EnablingBroadcastSetsTheSocketsOption)
{
    openOnFreePort();
    const int descriptor = descriptorBoundTo(m_port);
    EXPECT_NE(socketOption(descriptor, SO_BROADCAST), 0);
    ASSERT_EQ(m_socket->enableBroadcast(false), std::nullopt);
    EXPECT_EQ(socketOption(descriptor, SO_BROADCAST), 0);
}

TEST_F(PosixAsyncUdpSocketTest, TheReceiveThreadSleepsWhileNothingComes)
{
    openOnFreePort();
    m_peer.send("x", m_port);
    ASSERT_TRUE(waitForCount(1));
    m_queue.runFor(50ms);
    const std::size_t atFirst = sleepsOfReceiveThread();
    m_queue.runFor(300ms);
    EXPECT_EQ(sleepsOfReceiveThread(), atFirst);
}

TEST_F(PosixAsyncUdpSocketTest, APortThatSomebodyHasIsABindError)
{
    UdpPeer holder;
    ASSERT_TRUE(holder.bindTo(0));
    EXPECT_EQ(m_socket->bindToPort(holder.port()), "Address already in use");
    EXPECT_EQ(m_socket->localPort(), 0);
}

TEST_F(PosixAsyncUdpSocketTest, NobodyCanTakeItsPortNotEvenWithAddressReuse)
{
    openOnFreePort();
    EXPECT_FALSE(UdpPeer(UdpPeer::Family::ipv4).bindTo(m_port));
    EXPECT_FALSE(UdpPeer(UdpPeer::Family::ipv6).bindTo(m_port));

    const int greedy = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    const int one = 1;
    setsockopt(greedy, SOL_SOCKET, SO_REUSEADDR, &one, sizeof one);
    setsockopt(greedy, SOL_SOCKET, SO_REUSEPORT, &one, sizeof one);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(m_port);
    EXPECT_NE(bind(greedy, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    close(greedy);
}

TEST_F(PosixAsyncUdpSocketTest, TheSamePortCanBeOpenedAgainAtOnceFiftyTimes)
{
    openOnFreePort();
    for (int i = 0; i < 50; ++i) {
        m_peer.send("late", m_port);
        m_socket.reset();
        m_socket = makeSocket();
        ASSERT_EQ(m_socket->bindToPort(m_port), std::nullopt);
        ASSERT_EQ(m_socket->beginReceiving(), std::nullopt);
    }
    m_delegate.received.clear();
    m_delegate.count = 0;
    m_peer.send("now", m_port);
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(m_delegate.received[0].data, "now");
}

TEST_F(PosixAsyncUdpSocketTest, ClosingFromWithinADeliveryDeliversNothingMore)
{
    openOnFreePort();
    m_delegate.whileDelivering = [this] { m_socket->close(); };
    for (int i = 0; i < 20; ++i)
        m_peer.send("x", m_port);
    std::this_thread::sleep_for(50ms);
    ASSERT_TRUE(waitForCount(1));
    EXPECT_TRUE(m_socket->isClosed());
    m_queue.runFor(50ms);
    EXPECT_EQ(m_delegate.count, 1u);
    EXPECT_EQ(m_queue.pending(), 0u);
}

TEST_F(PosixAsyncUdpSocketTest, DestroyingFromWithinADeliveryDeliversNothingMoreAndEndsTheSlice)
{
    openOnFreePort();
    m_delegate.whileDelivering = [this] { m_socket.reset(); };
    for (int i = 0; i < 20; ++i)
        m_peer.send("x", m_port);
    std::this_thread::sleep_for(50ms);
    ASSERT_TRUE(waitForCount(1));
    m_queue.runFor(50ms);
    EXPECT_EQ(m_delegate.count, 1u);
    EXPECT_EQ(m_slices, 1);
}

TEST_F(PosixAsyncUdpSocketTest, ClosingDropsDatagramsThatWaitForTheMainThread)
{
    openOnFreePort();
    m_queue.runFor(20ms);
    m_peer.send("x", m_port);
    ASSERT_TRUE(waitForPendingJob());
    m_socket->close();
    m_queue.runFor(20ms);
    EXPECT_EQ(m_delegate.count, 0u);
}

TEST_F(PosixAsyncUdpSocketTest, ASocketDestroyedWithAPendingWakeUpDeliversNothing)
{
    openOnFreePort();
    m_queue.runFor(20ms);
    m_peer.send("x", m_port);
    ASSERT_TRUE(waitForPendingJob());
    m_socket.reset();
    m_queue.runFor(20ms);
    EXPECT_EQ(m_delegate.count, 0u);
    EXPECT_EQ(m_slices, 0);
}

TEST_F(PosixAsyncUdpSocketTest, ClosingASilentSocketTakesLessThanHalfASecond)
{
    openOnFreePort();
    std::this_thread::sleep_for(50ms); // the thread sits in its read
    const auto start = SteadyClock::now();
    m_socket->close();
    EXPECT_LT(SteadyClock::now() - start, 500ms);
    EXPECT_THAT(threadNames(), ::testing::Not(::testing::Contains("client udp sock")));
}

TEST_F(PosixAsyncUdpSocketTest, TheReceiveThreadHasTheLabelsFirst15Bytes)
{
    openOnFreePort();
    const ::testing::Matcher<std::vector<std::string>> named = ::testing::Contains("client udp sock");
    for (int i = 0; i < 100 && !named.Matches(threadNames()); ++i)
        m_queue.runFor(10ms); // it names itself
    EXPECT_THAT(threadNames(), named);
}

TEST_F(PosixAsyncUdpSocketTest, AClosedOrUnboundSocketRefusesToReceive)
{
    EXPECT_EQ(m_socket->beginReceiving(), "The socket is not bound to a port");
    EXPECT_EQ(m_socket->receiveOnce(), "The socket is not bound to a port");
    EXPECT_FALSE(m_socket->isClosed());
    m_socket->close();
    m_socket->close();
    EXPECT_TRUE(m_socket->isClosed());
    EXPECT_EQ(m_socket->enableBroadcast(true), "The socket is closed");
    EXPECT_EQ(m_socket->bindToPort(0), "The socket is closed");
    EXPECT_EQ(m_socket->beginReceiving(), "The socket is closed");
    EXPECT_EQ(m_socket->receiveOnce(), "The socket is closed");
}

TEST_F(PosixAsyncUdpSocketTest, ReceiveOnceDeliversOneAndKeepsTheNextForTheNextAsking)
{
    ASSERT_EQ(m_socket->bindToPort(0), std::nullopt);
    ASSERT_EQ(m_socket->receiveOnce(), std::nullopt);
    m_peer.send("first", m_socket->localPort());
    m_peer.send("second", m_socket->localPort());
    m_queue.runFor(100ms);
    ASSERT_EQ(m_delegate.count, 1u);
    ASSERT_EQ(m_socket->receiveOnce(), std::nullopt);
    ASSERT_TRUE(waitForCount(2));
    EXPECT_EQ(m_delegate.received[1].data, "second");
}

TEST_F(PosixAsyncUdpSocketTest, AFloodOf2SecondsTakesAtMost6MebibytesAndTellsWhatItDroppedOnceASecond)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "a sanitizer's own memory would be measured";
#endif
    openOnFreePort();
    m_delegate.keepsAll = false;
    m_peer.send("warm", m_port);
    ASSERT_TRUE(waitForCount(1));

    const std::size_t before = residentBytes();
    std::size_t sent = 0;
    for (const auto end = SteadyClock::now() + 2s; SteadyClock::now() < end; ++sent)
        m_peer.send("MOVE,16383,16383,1712345678321;", m_port);
    EXPECT_LE(residentBytes() - before, 6u << 20);
    ASSERT_GT(sent, 70'000u) << "too slow a flood to fill the queue";

    ASSERT_TRUE(waitUntilDrained(descriptorBoundTo(m_port)));
    for (int i = 0; i < 100; ++i)
        m_peer.send("UP,16383,16383,1712345678321;", m_port);
    ASSERT_TRUE(waitUntilDrained(descriptorBoundTo(m_port)));
    waitForCount(1 + 57'344 + 100);
    EXPECT_EQ(m_delegate.count, 1u + 57'344 + 100);

    m_socket->close();
    EXPECT_GE(countLogLines("the main thread is behind, dropped "), 1u);
    EXPECT_LE(countLogLines("the main thread is behind, dropped "), 4u);
}

TEST_F(PosixAsyncUdpSocketTest, TheMainThreadRunsOtherJobsDuringAFlood)
{
    openOnFreePort();
    m_delegate.keepsAll = false;
    m_delegate.whileDelivering = [] { // slower than the flood, so that every slice is a full one
        for (const auto end = SteadyClock::now() + 50us; SteadyClock::now() < end;) { }
    };
    std::atomic<bool> isOver = false;
    std::thread flood([&] {
        while (!isOver)
            m_peer.send("MOVE,16383,16383,1712345678321;", m_port);
    });
    ASSERT_TRUE(waitForCount(1'000));
    std::vector<SteadyClock::duration> waits;
    for (int i = 0; i < 20; ++i) {
        bool hasRun = false;
        const auto start = SteadyClock::now();
        m_queue.async([&] { hasRun = true; });
        ASSERT_TRUE(m_queue.runUntil([&] { return hasRun; }));
        waits.push_back(SteadyClock::now() - start);
    }
    isOver = true;
    flood.join();
    std::sort(waits.begin(), waits.end());
    EXPECT_LT(waits[waits.size() / 2], 200ms); // the longest one may be another program's doing
}

TEST_F(PosixAsyncUdpSocketTest, AnErrorThatStaysIsLoggedAndDoesNotSpin)
{
    openOnFreePort();
    const int descriptor = descriptorBoundTo(m_port);
    ASSERT_GE(descriptor, 0);
    const int noSocket = open("/dev/null", O_RDONLY | O_CLOEXEC);
    m_peer.send("x", m_port);
    ASSERT_TRUE(waitForCount(1));
    dup2(noSocket, descriptor);
    close(noSocket);
    m_peer.send("y", m_port); // ends the read that still goes on

    const double before = processorSeconds();
    m_queue.runFor(1'200ms);
    EXPECT_LT(processorSeconds() - before, 0.5);
    const auto start = SteadyClock::now();
    m_socket->close();
    EXPECT_LT(SteadyClock::now() - start, 500ms); // not held up by the pause after an error
    EXPECT_GE(countLogLines("client udp socket: cannot receive: Socket operation on non-socket"), 1u);
    EXPECT_LE(countLogLines("cannot receive"), 3u);
}

TEST_F(PosixAsyncUdpSocketTest, TheFactoryMakesSocketsThatCallItsHookAfterASlice)
{
    int slices = 0;
    PosixAsyncUdpSocketFactory factory(m_queue, m_log, [&] { ++slices; });
    const auto made = factory.makeSocket(m_delegate, "client udp socket");
    auto& socket = dynamic_cast<PosixAsyncUdpSocket&>(*made);
    ASSERT_EQ(socket.bindToPort(0), std::nullopt);
    ASSERT_EQ(socket.beginReceiving(), std::nullopt);
    EXPECT_EQ(socket.connectedPort(), 0);
    m_peer.send("x", socket.localPort());
    ASSERT_TRUE(waitForCount(1));
    EXPECT_EQ(slices, 1);
}

} // namespace companion::testing
