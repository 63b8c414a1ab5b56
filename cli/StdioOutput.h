#pragma once

#include "cli/Output.h"

#include <atomic>
#include <mutex>
#include <string>

namespace companion::cli {

/// Standard output and standard error of the process. Waits for a reader that is slow: no line is lost.
///
/// What cannot be written to standard output is told once on standard error. Control characters are spelled out. Marks
/// are coloured on a terminal, unless NO_COLOR is set (no-color.org).
class StdioOutput : public Output {
public:
    StdioOutput();

    void print(std::string_view line) override;
    void printCheck(Mark mark, std::string_view line) override;
    void complain(std::string_view line) override;
    std::optional<std::size_t> progressWidth() const override;
    void showProgress(std::string_view text) override;

    /// Lines of the program's own, to standard output as they are.
    void printText(const std::string& text);

    /// Whether anything could not be written to standard output.
    bool hasFailed() const { return m_hasFailed; }

private:
    void removeProgress();
    void toStandardOutput(const std::string& text);

    /// The system's error number when not all of it can be written, else 0.
    static int write(int descriptor, const std::string& text);

    const bool m_isColoured;
    std::mutex m_mutex;
    bool m_showsProgress = false;
    std::atomic<bool> m_hasFailed = false;
};

} // namespace companion::cli
