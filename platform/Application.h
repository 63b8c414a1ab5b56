#pragma once

namespace companion {

/// The running application among the others of the desktop. Main thread only.
class Application {
public:
    virtual ~Application() = default;

    /// activateIgnoringOtherApps:
    /// Brings the application's window to the front, whichever application is active now.
    virtual void activateIgnoringOtherApps() = 0;
};

} // namespace companion
