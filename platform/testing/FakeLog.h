#pragma once

#include "platform/Log.h"
#include "platform/testing/Transcript.h"

#include <mutex>

namespace companion::testing {

/// Writes "log <line>".
class FakeSystemLog : public SystemLog {
public:
    explicit FakeSystemLog(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void log(std::string_view line) override
    {
        const std::lock_guard lock(m_mutex);
        m_transcript.add("log " + std::string(line));
    }

private:
    std::mutex m_mutex;
    Transcript& m_transcript;
};

/// Writes "print <line>".
class FakeConsole : public Console {
public:
    explicit FakeConsole(Transcript& transcript)
        : m_transcript(transcript)
    {
    }

    void print(std::string_view line) override
    {
        const std::lock_guard lock(m_mutex);
        m_transcript.add("print " + std::string(line));
    }

private:
    std::mutex m_mutex;
    Transcript& m_transcript;
};

} // namespace companion::testing
