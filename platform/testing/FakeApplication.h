#pragma once

#include "platform/Application.h"
#include "platform/testing/Transcript.h"

namespace companion::testing {

/// Writes "activate".
class FakeApplication : public Application {
public:
    explicit FakeApplication(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void activateIgnoringOtherApps() override { m_transcript.add("activate"); }

private:
    Transcript& m_transcript;
};

} // namespace companion::testing
