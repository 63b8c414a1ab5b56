#include "platform/posix/PosixAsyncUdpSocketFactory.h"

#include "platform/posix/PosixAsyncUdpSocket.h"

#include <utility>

namespace companion {

PosixAsyncUdpSocketFactory::PosixAsyncUdpSocketFactory(
    MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice, std::function<void()> afterClose)
    : m_mainQueue(mainQueue)
    , m_log(log)
    , m_afterSlice(std::move(afterSlice))
    , m_afterClose(std::move(afterClose))
{
}

std::unique_ptr<AsyncUdpSocket> PosixAsyncUdpSocketFactory::makeSocket(
    AsyncUdpSocketDelegate& delegate, const std::string& queueLabel)
{
    return std::make_unique<PosixAsyncUdpSocket>(
        delegate, queueLabel, m_mainQueue, m_log, m_afterSlice, m_afterClose);
}

} // namespace companion
