#pragma once

#include "platform/Log.h"

#include <cstddef>
#include <optional>
#include <string_view>

namespace companion::cli {

/// The outcome of a check of `doctor`.
enum class Mark { ok, warn, fail };

/// Standard output and standard error. Lines have no line end and may contain anything, since they quote
/// what panels send. Any thread.
class Output {
public:
    virtual ~Output() = default;

    /// A result, to standard output.
    virtual void print(std::string_view line) = 0;

    /// A check of `doctor`, to standard output, its mark in front.
    virtual void printCheck(Mark mark, std::string_view line) = 0;

    /// An error or a diagnostic line, to standard error.
    virtual void complain(std::string_view line) = 0;

    /// The columns that a progress bar may take; nothing when standard error is no terminal.
    virtual std::optional<std::size_t> progressWidth() const = 0;

    /// Replaces what was shown so before. Vanishes when a line is printed.
    virtual void showProgress(std::string_view text) = 0;
};

/// Prints the diagnostics of request classes and adapters to standard error, with --verbose only.
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
