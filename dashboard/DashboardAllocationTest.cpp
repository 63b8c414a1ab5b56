#include "dashboard/testing/DashboardTest.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> allocationCount = 0;

} // namespace

void* operator new(std::size_t size)
{
    ++allocationCount;
    if (void* memory = std::malloc(size > 0 ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace companion::testing {

namespace {

/// Counts, and keeps nothing.
class CountingPoster : public MouseEventPoster {
public:
    std::optional<MouseEvent> makeMouseEvent(MouseEventType type, Point at) override
    {
        return MouseEvent{type, at, 0};
    }
    std::optional<KeyEvent> makeKeyEvent(std::uint16_t, bool) override { return std::nullopt; }
    void post(const MouseEvent&) override { ++posted; }
    void post(const KeyEvent&) override { ++posted; }
    void flush() override { }
    void touchesBegin() override { }
    void touchesEnd() override { }
    void releaseHeldButton() override { }

    std::size_t posted = 0;
};

class SilentConsole : public Console {
public:
    void print(std::string_view) override { }
};

class SilentSocket : public AsyncUdpSocket {
public:
    std::optional<Error> enableBroadcast(bool) override { return std::nullopt; }
    std::uint16_t connectedPort() const override { return 0; }
    std::optional<Error> bindToPort(std::uint16_t) override { return std::nullopt; }
    std::optional<Error> beginReceiving() override { return std::nullopt; }
    std::optional<Error> receiveOnce() override { return std::nullopt; }
    bool isClosed() const override { return false; }
    void close() override { }
};

class DashboardAllocationTest : public DashboardTest {
protected:
    std::shared_ptr<DashboardViewController> makeDashboard(TouchSource source)
    {
        return DashboardViewController::make(
            {view, alerts, queue, log, PanelRequestHost{http, addresses, interfaceName, silentConsole},
                {sockets, clock, pause, screen, countingPoster, source},
                {fileChooser, fileReader, application, poster}, {}, {}});
    }

    CountingPoster countingPoster;
    SilentConsole silentConsole;
    SilentSocket socket;
};

} // namespace

TEST_F(DashboardAllocationTest, TouchesAllocateNothingOnceTheFirstIsThrough)
{
    for (const TouchSource source : {TouchSource::any, TouchSource::panel}) {
        const auto controller = makeDashboard(source);
        controller->didPickCastingDeviceWithIP("192.168.101.120", "C0A86578", "Room 204");
        const UdpSender panel{"192.168.101.120", 50000};
        controller->udpSocketDidReceiveData(socket, "MOVE,1,2,3", panel);

        countingPoster.posted = 0;
        const std::size_t before = allocationCount;
        for (int touch = 0; touch < 1000; ++touch) {
            controller->udpSocketDidReceiveData(socket, "DOWN,16383.25,8191.75,1712345678321;", panel);
            controller->udpSocketDidReceiveData(socket, "MOVE,16384.25,8190.75,1712345678331", panel);
        }
        EXPECT_EQ(allocationCount - before, 0u);
        EXPECT_EQ(countingPoster.posted, 2000u);
    }
}

} // namespace companion::testing
