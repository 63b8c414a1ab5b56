#pragma once

namespace companion {

/// What the application decides about its own life. It holds no state.
class AppDelegate {
public:
    /// applicationDidFinishLaunching:
    void applicationDidFinishLaunching() { }

    /// applicationWillTerminate:
    void applicationWillTerminate() { }

    /// applicationShouldTerminateAfterLastWindowClosed:
    /// Closing the main window ends the program.
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
};

} // namespace companion
