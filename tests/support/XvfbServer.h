#pragma once

#include "tests/support/ChildProcess.h"

#include <memory>
#include <string>

namespace companion::testing {

/// A private X server without hardware, on a display number that no other test takes; gone with the object.
class XvfbServer {
public:
    /// `geometry` is "1366x768" or the like; the depth is 24 bits. Throws when the server does not start.
    explicit XvfbServer(const std::string& geometry = "1280x800");

    /// For DISPLAY, for example ":99".
    const std::string& display() const { return m_display; }

    /// Takes connections and answers nobody until `resume`.
    void pause();
    void resume();

    /// Its clients lose their connections.
    void stop();

    /// Another server takes the place of one that was stopped, on the same display. Throws when it does not start.
    void startAgain();

private:
    std::string m_geometry;
    std::string m_display;
    std::unique_ptr<ChildProcess> m_server;
};

} // namespace companion::testing
