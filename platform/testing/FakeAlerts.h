#pragma once

#include "platform/Alerts.h"
#include "platform/testing/Transcript.h"

#include <functional>
#include <vector>

namespace companion::testing {

/// Shows nothing and returns `answer` at once, after `whileShown`; writes "alert Message". It does not pump the main queue.
class FakeAlerts : public Alerts {
public:
    struct Shown {
        std::string message;
        std::string informativeText;
    };

    explicit FakeAlerts(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    bool runModal(const std::string& message, const std::string& informativeText) override
    {
        shown.push_back({message, informativeText});
        m_transcript.add("alert " + message);
        if (whileShown)
            whileShown();
        return answer;
    }

    std::vector<Shown> shown;
    std::function<void()> whileShown;
    bool answer = true;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
