#pragma once

#include <string>
#include <vector>

namespace companion::testing {

/// What happened, in order, one line each; several fakes may write the same one, so that a test sees orders.
class Transcript {
public:
    void add(std::string line) { m_lines.push_back(std::move(line)); }
    const std::vector<std::string>& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

    /// The lines joined by `separator`, and the transcript is empty again.
    std::string take(const std::string& separator = "\n")
    {
        std::string text;
        for (const std::string& line : m_lines)
            text += (text.empty() ? "" : separator) + line;
        m_lines.clear();
        return text;
    }

private:
    std::vector<std::string> m_lines;
};

} // namespace companion::testing
