#pragma once

#include "platform/AsyncUdpSocket.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"

#include <functional>

namespace companion {

/// Makes `PosixAsyncUdpSocket`s. Main thread only; the queue and the log must outlive the factory and its sockets.
class PosixAsyncUdpSocketFactory : public AsyncUdpSocketFactory {
public:
    /// `afterSlice`, which may be empty, is called on the main thread after each run of datagrams that were
    /// delivered in one go: what their handling put together can be sent off there. `afterClose`, which may be empty,
    /// is called when a socket has been closed, however much it had still to deliver.
    PosixAsyncUdpSocketFactory(MainQueue& mainQueue, SystemLog& log, std::function<void()> afterSlice = {},
        std::function<void()> afterClose = {});

    std::unique_ptr<AsyncUdpSocket> makeSocket(
        AsyncUdpSocketDelegate& delegate, const std::string& queueLabel) override;

private:
    MainQueue& m_mainQueue;
    SystemLog& m_log;
    const std::function<void()> m_afterSlice;
    const std::function<void()> m_afterClose;
};

} // namespace companion
