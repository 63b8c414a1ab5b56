#pragma once

#include "platform/Log.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace companion::cli {

/// How a check of `doctor` went.
enum class Mark { ok, warn, fail };

/// Standard output and standard error. Lines are without their line ends and must not be trusted to be harmless to a
/// terminal: they hold what panels say. Any thread.
class Output {
public:
    virtual ~Output() = default;

    /// A result, to standard output.
    virtual void print(std::string_view line) = 0;

    /// A check of `doctor`, to standard output, its mark in front.
    virtual void printCheck(Mark mark, std::string_view line) = 0;

    /// What went wrong or goes on, to standard error.
    virtual void complain(std::string_view line) = 0;

    /// The columns that a progress bar may take; nothing when standard error is no terminal.
    virtual std::optional<std::size_t> progressWidth() const = 0;

    /// Replaces what was shown so before. Vanishes when a line is printed.
    virtual void showProgress(std::string_view text) = 0;
};

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
