#include "platform/curl/CurlHttpSession.h"

#include "platform/curl/CurlTransfer.h"
#include "platform/FatalError.h"
#include "platform/posix/BlockedSignals.h"

#include <algorithm>
#include <utility>

namespace companion {

using SteadyClock = std::chrono::steady_clock;

namespace {

/// How often idle time is measured; bytes that leave the kernel's send buffer wake nobody.
constexpr std::chrono::milliseconds longestWait = std::chrono::seconds(1);

} // namespace

/// If libcurl's wake-up fails, the thread still looks within a second. Needs the lock.
void CurlHttpSession::Shared::wakeThread()
{
    changed.notify_one();
    if (multi)
        curl_multi_wakeup(multi);
}

CurlHttpSession::CurlHttpSession(SystemLog& log)
    : m_log(log)
{
}

CurlHttpSession::~CurlHttpSession()
{
    if (!m_thread.joinable())
        return;
    if (std::this_thread::get_id() == m_thread.get_id())
        fatalError("An HTTP session was destroyed by one of its own completions");
    {
        const std::lock_guard lock(m_shared.mutex);
        m_shared.isStopping = true;
        m_shared.wakeThread();
    }
    m_thread.join();
    while (!m_running.empty())
        take(*m_running.back());
    setMulti(nullptr);
}

void CurlHttpSession::send(HttpRequest request, HttpCompletion completion)
{
    auto transfer = std::make_unique<CurlTransfer>(std::move(request), std::move(completion));
    const std::lock_guard lock(m_shared.mutex);
    m_shared.newTransfers.push_back(std::move(transfer));
    m_shared.wakeThread();
    if (!m_thread.joinable()) {
        const BlockedSignals blockedSignals;
        m_thread = std::thread([this] { run(); });
    }
}

void CurlHttpSession::run()
{
    while (startNewTransfers()) {
        if (m_running.empty())
            continue;
        int running = 0;
        CURLMcode result = curl_multi_perform(m_shared.multi, &running);
        for (const auto& transfer : m_running)
            transfer->reportProgress();
        finishTransfers();
        stopFaultyTransfers();
        if (result == CURLM_OK && !m_running.empty())
            result = curl_multi_poll(m_shared.multi, nullptr, 0, millisecondsToWait(), nullptr);
        if (result != CURLM_OK)
            failAll(std::exchange(m_running, {}), curl_multi_strerror(result));
    }
}

/// Waits until there is something to do; false when the session ends.
bool CurlHttpSession::startNewTransfers()
{
    Transfers transfers;
    {
        std::unique_lock lock(m_shared.mutex);
        m_shared.changed.wait(lock,
            [this] { return m_shared.isStopping || !m_shared.newTransfers.empty() || !m_running.empty(); });
        if (m_shared.isStopping)
            return false;
        transfers.swap(m_shared.newTransfers);
    }
    if (!m_shared.multi && !openMulti()) {
        failAll(std::move(transfers), "libcurl cannot start");
        return true;
    }
    for (auto& transfer : transfers)
        start(std::move(transfer));
    return true;
}

bool CurlHttpSession::openMulti()
{
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (initialised != CURLE_OK)
        return false;
    setMulti(curl_multi_init());
    // Without free file descriptors the handle is made all the same, but nothing can wake it.
    if (m_shared.multi && curl_multi_wakeup(m_shared.multi) == CURLM_OK)
        return true;
    setMulti(nullptr);
    return false;
}

void CurlHttpSession::setMulti(void* multi)
{
    const std::lock_guard lock(m_shared.mutex);
    if (m_shared.multi)
        curl_multi_cleanup(m_shared.multi);
    m_shared.multi = multi;
}

void CurlHttpSession::start(std::unique_ptr<CurlTransfer> transfer)
{
    if (const auto error = transfer->prepare()) {
        m_log.log("HTTP request not sent: " + *error);
        transfer->fail(*error);
        return;
    }
    if (const CURLMcode result = curl_multi_add_handle(m_shared.multi, transfer->handle());
        result != CURLM_OK) {
        transfer->fail(curl_multi_strerror(result));
        return;
    }
    m_running.push_back(std::move(transfer));
}

void CurlHttpSession::finishTransfers()
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_shared.multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode result = message->data.result; // the message goes with the handle
        take(CurlTransfer::of(message->easy_handle))->finish(result);
    }
}

/// Ends what libcurl would let go on: transfers that are idle for too long or receive too much.
void CurlHttpSession::stopFaultyTransfers()
{
    const auto now = SteadyClock::now();
    std::vector<std::pair<CurlTransfer*, CURLcode>> faulty;
    for (const auto& transfer : m_running) {
        if (const CURLcode fault = transfer->check(now); fault != CURLE_OK)
            faulty.emplace_back(transfer.get(), fault);
    }
    for (const auto& [transfer, fault] : faulty)
        take(*transfer)->finish(fault);
}

std::unique_ptr<CurlTransfer> CurlHttpSession::take(CurlTransfer& transfer)
{
    curl_multi_remove_handle(m_shared.multi, transfer.handle());
    const auto place = std::find_if(
        m_running.begin(), m_running.end(), [&](const auto& running) { return running.get() == &transfer; });
    std::unique_ptr<CurlTransfer> taken = std::move(*place);
    m_running.erase(place);
    return taken;
}

int CurlHttpSession::millisecondsToWait() const
{
    auto wait = longestWait;
    const auto now = SteadyClock::now();
    for (const auto& transfer : m_running)
        wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(transfer->deadline() - now));
    return std::max(static_cast<int>(wait.count()), 0);
}

/// Also closes libcurl's handle; the next request opens another one.
void CurlHttpSession::failAll(Transfers transfers, const std::string& reason)
{
    if (!std::exchange(m_hasLoggedFailure, true))
        m_log.log("HTTP requests fail: " + reason);
    for (const auto& transfer : transfers)
        curl_multi_remove_handle(m_shared.multi, transfer->handle());
    setMulti(nullptr);
    for (const auto& transfer : transfers)
        transfer->fail(reason);
}

} // namespace companion
