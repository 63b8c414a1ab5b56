#include "platform/posix/PosixAsyncUdpSocketFactory.h"

#include "platform/posix/PosixAsyncUdpSocket.h"

#include <utility>

namespace companion {

PosixAsyncUdpSocketFactory::PosixAsyncUdpSocketFactory(
    MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice)
    : m_mainQueue(mainQueue)
    , m_log(log)
    , m_afterSlice(std::move(afterSlice))
{
}

std::unique_ptr<AsyncUdpSocket> PosixAsyncUdpSocketFactory::makeSocket(
    AsyncUdpSocketDelegate& delegate, const std::string& queueLabel)
{
    return std::make_unique<PosixAsyncUdpSocket>(delegate, queueLabel, m_mainQueue, m_log, m_afterSlice);
}

} // namespace companion
