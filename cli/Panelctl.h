#pragma once

#include "cli/Options.h"

#include <memory>

namespace companion::cli {

/// Runs one command with the adapters that it needs. Made after the QCoreApplication and gone before it; main thread
/// only.
class Panelctl {
public:
    explicit Panelctl(const Options& options);
    ~Panelctl();
    Panelctl(const Panelctl&) = delete;
    Panelctl& operator=(const Panelctl&) = delete;

    /// Runs the command and prints its result. Returns the process's exit status.
    int run();

    /// Whether the process must exit without destroying objects that such threads use.
    bool hasLeftThreadsBehind() const;

private:
    class Parts;

    std::unique_ptr<Parts> m_parts;
};

} // namespace companion::cli
