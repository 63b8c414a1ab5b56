#include "platform/wayland/VirtualPointerDevice.h"

#include <future>
#include <thread>
#include <utility>

namespace companion {

using namespace std::chrono_literals;

namespace {

constexpr auto longestWait = 1s;

// The compositor counts the presses of all pointers together, so any of them can release the button.
void releaseFromNewConnection(const std::string& socketPath)
{
    std::string whyNot;
    const auto connection = VirtualPointerConnection::open(socketPath, whyNot);
    if (!connection || !connection->waitUntilReady(longestWait, whyNot))
        return;
    connection->setLeftButtonDown(false);
    connection->sync(longestWait);
}

} // namespace

std::unique_ptr<VirtualPointerDevice> VirtualPointerDevice::open(const std::string& socketPath,
    Mapping mapping, ScreenName screenName, SystemLog& log, std::string& whyNot)
{
    std::unique_ptr<VirtualPointerConnection> connection = VirtualPointerConnection::open(socketPath, whyNot);
    if (!connection || !connection->waitUntilReady(longestWait, whyNot))
        return nullptr;
    return std::unique_ptr<VirtualPointerDevice>(new VirtualPointerDevice(
        socketPath, std::move(connection), std::move(mapping), std::move(screenName), log));
}

VirtualPointerDevice::VirtualPointerDevice(std::string socketPath,
    std::unique_ptr<VirtualPointerConnection> connection, Mapping mapping, ScreenName screenName,
    SystemLog& log)
    : m_socketPath(std::move(socketPath))
    , m_mapping(std::move(mapping))
    , m_screenName(std::move(screenName))
    , m_log(log)
{
    use(std::move(connection));
    touchesBegin();
}

VirtualPointerDevice::~VirtualPointerDevice()
{
    m_connection->sync(longestWait);
}

void VirtualPointerDevice::use(std::unique_ptr<VirtualPointerConnection> connection)
{
    m_connection = std::move(connection);
    m_connection->setLog(m_log);
    m_connection->watchFromEventLoop();
    m_selected.reset();
}

std::optional<Size> VirtualPointerDevice::area() const
{
    const std::optional<ScreenMapping> mapping = m_mapping();
    if (!mapping || !m_connection->isReady())
        return std::nullopt;
    return mapping->size;
}

void VirtualPointerDevice::moveTo(Point at)
{
    selectOutput();
    if (const std::optional<Size> size = area())
        m_connection->move(toOutputPosition(at, *size));
}

// Sent at once: when the program fails, a release on another connection must not overtake the press.
void VirtualPointerDevice::setLeftButtonDown(bool isDown)
{
    m_connection->setLeftButtonDown(isDown);
    m_connection->flush();
}

void VirtualPointerDevice::selectOutput()
{
    const std::optional<ScreenMapping> mapping = m_mapping();
    if (!mapping || mapping == m_selected)
        return;
    m_selected = mapping;
    m_connection->selectOutput(m_screenName());
}

void VirtualPointerDevice::flush()
{
    reconnectIfLost();
    m_connection->flush();
}

void VirtualPointerDevice::reconnectIfLost()
{
    if (!m_connection->isLost() || !m_reconnects.isDue(std::chrono::steady_clock::now()))
        return;
    std::string whyNot;
    if (auto connection = VirtualPointerConnection::open(m_socketPath, whyNot)) {
        use(std::move(connection));
        m_connection->setLeftButtonDown(false); // for what it held when it was lost
        m_log.log("Connecting to the Wayland compositor again");
    }
}

void VirtualPointerDevice::touchesBegin()
{
    selectOutput();
    setLeftButtonDown(false);
}

void VirtualPointerDevice::releaseWhenProgramFails()
{
    auto isDone = std::make_shared<std::promise<void>>();
    std::thread([isDone, path = m_socketPath] {
        releaseFromNewConnection(path);
        isDone->set_value();
    }).detach();
    isDone->get_future().wait_for(longestWait);
}

} // namespace companion
