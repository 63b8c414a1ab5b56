#pragma once

#include "platform/HttpSession.h"
#include "platform/Log.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace companion {

class CurlTransfer;

/// HTTP/1.1 by libcurl's multi interface, on one thread that is also the delivery thread: a slow completion delays the
/// other requests. Thread and libcurl are started by the first request.
///
/// If libcurl cannot work, for example for lack of file descriptors, requests fail at once, which is logged once.
/// Destroying the session cancels the requests in flight and drops their completions; a completion must not destroy
/// it. The log must outlive it.
class CurlHttpSession : public HttpSession {
public:
    explicit CurlHttpSession(SystemLog& log);
    ~CurlHttpSession() override;
    CurlHttpSession(const CurlHttpSession&) = delete;
    CurlHttpSession& operator=(const CurlHttpSession&) = delete;

    void send(HttpRequest request, HttpCompletion completion) override;

private:
    using Transfers = std::vector<std::unique_ptr<CurlTransfer>>;

    /// What the callers' threads and the session's thread share.
    struct Shared {
        void wakeThread();

        std::mutex mutex;
        std::condition_variable changed;
        Transfers newTransfers;
        bool isStopping = false;
        void* multi = nullptr; ///< libcurl's handle, null until it is needed and after a failure.
    };

    void run();
    bool startNewTransfers();
    bool openMulti();
    void setMulti(void* multi);
    void start(std::unique_ptr<CurlTransfer> transfer);
    void finishTransfers();
    void stopFaultyTransfers();
    std::unique_ptr<CurlTransfer> take(CurlTransfer& transfer);
    int millisecondsToWait() const;
    void failAll(Transfers transfers, const std::string& reason);

    SystemLog& m_log;
    Shared m_shared;
    Transfers m_running; ///< Used on the session's thread only, like the next one.
    bool m_hasLoggedFailure = false;
    std::thread m_thread;
};

} // namespace companion
