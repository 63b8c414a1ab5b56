#pragma once

#include "cli/Options.h"

#include <memory>

namespace companion::cli {

/// `panelctl` put together: the command that is asked for with the adapters that it works with. Made after the
/// QCoreApplication and gone before it; main thread only.
class Composition {
public:
    explicit Composition(const Options& options);
    ~Composition();
    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// Runs the command and tells its result; the process's exit status.
    int run();

    /// Whether the process has to end without tidying up.
    bool hasLeftThreadsBehind() const;

private:
    class Parts;

    std::unique_ptr<Parts> m_parts;
};

} // namespace companion::cli
