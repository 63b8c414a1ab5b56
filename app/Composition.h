#pragma once

#include "app/Options.h"

#include <memory>

namespace companion {

/// The program put together: every controller with the adapters that it works with. The only place, beside the
/// command-line tools, that names an adapter. Made after the QApplication and gone before it; main thread only.
class Composition {
public:
    explicit Composition(const Options& options);
    ~Composition();
    Composition(const Composition&) = delete;
    Composition& operator=(const Composition&) = delete;

    /// Shows the main window with the splash screen; the dashboard follows by itself.
    void start();

private:
    class Shell;
    class Works;

    std::unique_ptr<Shell> m_shell;
};

} // namespace companion
