#pragma once

#include "platform/Alerts.h"
#include "platform/testing/Transcript.h"

#include <functional>
#include <vector>

namespace companion::testing {

/// Shows nothing and returns at once, after `whileShown`; writes "alert Message". It does not pump the main queue.
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

    void runModal(const std::string& message, const std::string& informativeText) override
    {
        shown.push_back({message, informativeText});
        m_transcript.add("alert " + message);
        if (whileShown)
            whileShown();
    }

    std::vector<Shown> shown;
    std::function<void()> whileShown;

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
