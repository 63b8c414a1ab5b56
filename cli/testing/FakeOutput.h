#pragma once

#include "cli/Checks.h"
#include "cli/Output.h"

#include <mutex>
#include <string>
#include <vector>

namespace companion::cli::testing {

/// Keeps the lines: "out ...", "err ...", "ok ...", "progress ...".
class FakeOutput : public Output {
public:
    void print(std::string_view line) override { add("out ", line); }
    void printCheck(Mark mark, std::string_view line) override { add(markText(mark) + " ", line); }
    void complain(std::string_view line) override { add("err ", line); }
    std::optional<std::size_t> progressWidth() const override { return width; }
    void showProgress(std::string_view text) override { add("progress ", text); }

    std::optional<std::size_t> width;
    std::vector<std::string> lines;

private:
    void add(std::string_view kind, std::string_view line)
    {
        const std::lock_guard lock(m_mutex);
        lines.push_back(std::string(kind) + std::string(line));
    }

    std::mutex m_mutex;
};

} // namespace companion::cli::testing
