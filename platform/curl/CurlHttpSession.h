#pragma once

#include "platform/HttpSession.h"
#include "platform/Log.h"

#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace companion {

class CurlTransfer;

/// HTTP/1.1 by libcurl's multi interface, in one thread that is also the delivery thread: a completion that takes
/// long holds up the other requests.
///
/// Destroying it ends the requests that are under way and drops their completions; it may not be destroyed by a
/// completion. The log must outlive it.
class CurlHttpSession : public HttpSession {
public:
    explicit CurlHttpSession(SystemLog& log);
    ~CurlHttpSession() override;
    CurlHttpSession(const CurlHttpSession&) = delete;
    CurlHttpSession& operator=(const CurlHttpSession&) = delete;

    std::optional<Url> urlFromText(const std::string& text) const override;
    void send(HttpRequest request, HttpCompletion completion) override;

private:
    using Transfers = std::vector<std::unique_ptr<CurlTransfer>>;

    void run();
    bool startNewTransfers();
    void start(std::unique_ptr<CurlTransfer> transfer);
    void finishTransfers();
    void expireTransfers();
    std::unique_ptr<CurlTransfer> take(CurlTransfer& transfer);
    void waitForEvents();

    SystemLog& m_log;
    /// Libcurl's handle; but for the wake-up the thread's alone, as are the running ones.
    void* m_multi = nullptr;
    Transfers m_running;

    std::mutex m_mutex;
    Transfers m_new;
    bool m_isStopping = false;
    std::thread m_thread;
};

} // namespace companion
