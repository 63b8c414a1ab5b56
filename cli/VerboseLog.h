#pragma once

#include "cli/Output.h"
#include "platform/Log.h"

namespace companion::cli {

/// The lines that the panel's request classes and the adapters write, on standard error for those who ask for them.
class VerboseLog : public SystemLog, public Console {
public:
    VerboseLog(Output& output, bool isVerbose)
        : m_output(output)
        , m_isVerbose(isVerbose)
    {
    }

    void log(std::string_view line) override { print(line); }
    void print(std::string_view line) override
    {
        if (m_isVerbose)
            m_output.complain(line);
    }

private:
    Output& m_output;
    const bool m_isVerbose;
};

} // namespace companion::cli
