#include "platform/curl/CurlHttpSession.h"

#include "platform/curl/CurlTransfer.h"
#include "platform/curl/UrlText.h"
#include "platform/FatalError.h"
#include "platform/posix/BlockedSignals.h"

#include <algorithm>
#include <curl/curl.h>
#include <utility>

namespace companion {

using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::milliseconds longestWait = std::chrono::hours(1);

void initialiseLibcurlOnce()
{
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK)
        fatalError("libcurl cannot start");
}

} // namespace

CurlHttpSession::CurlHttpSession(SystemLog& log)
    : m_log(log)
{
    initialiseLibcurlOnce();
    m_multi = curl_multi_init();
    if (!m_multi)
        fatalError("libcurl has no memory");
    const BlockedSignals blockedSignals;
    m_thread = std::thread([this] { run(); });
}

CurlHttpSession::~CurlHttpSession()
{
    if (std::this_thread::get_id() == m_thread.get_id())
        fatalError("An HTTP session was destroyed by one of its own completions");
    {
        const std::lock_guard lock(m_mutex);
        m_isStopping = true;
    }
    curl_multi_wakeup(m_multi);
    m_thread.join();
    for (const auto& transfer : m_running)
        curl_multi_remove_handle(m_multi, transfer->handle());
    m_running.clear(); // a transfer's connections are closed with its own handle
    curl_multi_cleanup(m_multi);
}

std::optional<Url> CurlHttpSession::urlFromText(const std::string& text) const
{
    if (!isUrlText(text))
        return std::nullopt;
    return Url{text};
}

void CurlHttpSession::send(HttpRequest request, HttpCompletion completion)
{
    auto transfer = std::make_unique<CurlTransfer>(std::move(request), std::move(completion));
    {
        const std::lock_guard lock(m_mutex);
        m_new.push_back(std::move(transfer));
    }
    curl_multi_wakeup(m_multi);
}

void CurlHttpSession::run()
{
    while (startNewTransfers()) {
        int running = 0;
        curl_multi_perform(m_multi, &running);
        for (const auto& transfer : m_running)
            transfer->reportProgress();
        finishTransfers();
        expireTransfers();
        waitForEvents();
    }
}

/// False when the session ends.
bool CurlHttpSession::startNewTransfers()
{
    Transfers transfers;
    {
        const std::lock_guard lock(m_mutex);
        if (m_isStopping)
            return false;
        transfers.swap(m_new);
    }
    for (auto& transfer : transfers)
        start(std::move(transfer));
    return true;
}

void CurlHttpSession::start(std::unique_ptr<CurlTransfer> transfer)
{
    if (const auto refusal = transfer->prepare(SteadyClock::now())) {
        m_log.log("HTTP request not sent: " + *refusal);
        transfer->fail(*refusal);
        return;
    }
    if (const CURLMcode result = curl_multi_add_handle(m_multi, transfer->handle()); result != CURLM_OK) {
        transfer->fail(curl_multi_strerror(result));
        return;
    }
    m_running.push_back(std::move(transfer));
}

void CurlHttpSession::finishTransfers()
{
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(m_multi, &left)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode result = message->data.result; // the message goes with the handle
        take(CurlTransfer::of(message->easy_handle))->finish(result);
    }
}

void CurlHttpSession::expireTransfers()
{
    const auto now = SteadyClock::now();
    std::vector<CurlTransfer*> late;
    for (const auto& transfer : m_running) {
        if (transfer->isOutOfTime(now))
            late.push_back(transfer.get());
    }
    for (CurlTransfer* transfer : late)
        take(*transfer)->finish(CURLE_OPERATION_TIMEDOUT);
}

std::unique_ptr<CurlTransfer> CurlHttpSession::take(CurlTransfer& transfer)
{
    curl_multi_remove_handle(m_multi, transfer.handle());
    const auto place = std::find_if(
        m_running.begin(), m_running.end(), [&](const auto& running) { return running.get() == &transfer; });
    std::unique_ptr<CurlTransfer> taken = std::move(*place);
    m_running.erase(place);
    return taken;
}

void CurlHttpSession::waitForEvents()
{
    auto wait = longestWait;
    const auto now = SteadyClock::now();
    for (const auto& transfer : m_running)
        wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(transfer->deadline() - now));
    const auto milliseconds = std::max<std::chrono::milliseconds::rep>(wait.count(), 0);
    curl_multi_poll(m_multi, nullptr, 0, static_cast<int>(milliseconds), nullptr);
}

} // namespace companion
