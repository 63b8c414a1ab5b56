#pragma once

#include "cli/Output.h"

#include <mutex>
#include <string>

namespace companion::cli {

/// Standard output and standard error of the process. Waits for a reader that is slow: no line is lost.
///
/// Control characters are spelled out. Marks are coloured on a terminal, unless NO_COLOR is set (no-color.org).
class StdioOutput : public Output {
public:
    StdioOutput();

    void print(std::string_view line) override;
    void printCheck(Mark mark, std::string_view line) override;
    void complain(std::string_view line) override;
    std::optional<std::size_t> progressWidth() const override;
    void showProgress(std::string_view text) override;

private:
    void removeProgress();
    void write(int descriptor, const std::string& text);

    const bool m_isColoured;
    std::mutex m_mutex;
    bool m_showsProgress = false;
};

} // namespace companion::cli
