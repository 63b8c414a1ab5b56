#pragma once

#include "platform/HttpSession.h"
#include "platform/testing/Transcript.h"

#include <stdexcept>
#include <utility>
#include <vector>

namespace companion::testing {

/// Records requests; the test decides what comes back and when, on the thread that it calls from.
class FakeHttpSession : public HttpSession {
public:
    FakeHttpSession() = default;

    /// Also writes "send <URL>".
    explicit FakeHttpSession(Transcript& transcript)
        : m_transcript(&transcript)
    {
    }

    struct Sent {
        HttpRequest request;
        HttpCompletion completion;
    };

    void send(HttpRequest request, HttpCompletion completion) override
    {
        if (m_transcript)
            m_transcript->add("send " + request.url.text);
        m_sent.push_back({std::move(request), std::move(completion)});
    }

    const std::vector<Sent>& sent() const { return m_sent; }
    const HttpRequest& request(std::size_t index) const { return m_sent.at(index).request; }

    /// Completes request number `index`, and drops its callbacks.
    void complete(std::size_t index, HttpReply reply)
    {
        HttpCompletion completion = std::exchange(m_sent.at(index).completion, nullptr);
        if (!completion)
            throw std::logic_error("this request was completed before");
        m_sent.at(index).request.progress = nullptr;
        completion(std::move(reply));
    }

    void completeWithHttp(std::size_t index, int statusCode, std::string body)
    {
        complete(index, {std::move(body), UrlResponse{request(index).url, statusCode, {}}, std::nullopt});
    }

    void fail(std::size_t index, std::string error)
    {
        complete(index, {std::nullopt, std::nullopt, std::move(error)});
    }

    static std::string bodyText(const HttpRequest& request)
    {
        std::string text;
        if (request.body) {
            for (const auto& piece : *request.body)
                text += *piece;
        }
        return text;
    }

private:
    Transcript* const m_transcript = nullptr;
    std::vector<Sent> m_sent;
};

} // namespace companion::testing
