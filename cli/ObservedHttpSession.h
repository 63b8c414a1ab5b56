#pragma once

#include "platform/HttpSession.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

namespace companion::cli {

/// How a request ended: with a status and the body's text, or with an error.
struct Outcome {
    std::optional<int> status;
    std::optional<std::string> error;
    std::string body;
};

/// Reports to its owner how requests ended, which the request classes themselves hardly do.
class ObservedHttpSession : public HttpSession {
public:
    /// Delivery thread, once for each request, after its own completion.
    using Observer = std::function<void(const Outcome&)>;

    /// `inner` must outlive it. With a `timeout`, requests get that one instead of their own.
    explicit ObservedHttpSession(
        HttpSession& inner, std::optional<std::chrono::milliseconds> timeout = std::nullopt);

    /// To be set before requests are sent.
    void setObserver(Observer observer) { m_observer = std::move(observer); }

    /// From the next request on an answer of status 200 whose body is no UTF-8 becomes an error before the request's own
    /// completion sees it: for heartbeats, which take such an answer for a fatal one. Other requests take any bytes.
    void refuseUnreadableAnswers() { m_refusesUnreadableAnswers = true; }

    /// The requests that were sent so far.
    int sentRequests() const { return m_sentRequests; }

    void send(HttpRequest request, HttpCompletion completion) override;

private:
    HttpSession& m_inner;
    const std::optional<std::chrono::milliseconds> m_timeout;
    Observer m_observer;
    bool m_refusesUnreadableAnswers = false;
    std::atomic<int> m_sentRequests = 0;
};

} // namespace companion::cli
