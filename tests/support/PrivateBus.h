#pragma once

#include "tests/support/ChildProcess.h"

#include <filesystem>
#include <map>
#include <memory>
#include <string>

namespace companion::testing {

/// A D-Bus system bus of its own, for programs that find it through DBUS_SYSTEM_BUS_ADDRESS. Everybody on it may do
/// everything. Needs dbus-daemon; not started before `start`, gone with the object.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    /// Returns once the bus takes connections. Throws when it does not.
    void start();

    /// Its clients lose their connections; the next start is at the same address.
    void stop();

    /// Takes connections and keeps silent until `resume`.
    void pause();
    void resume();

    /// The same for the whole life of the object, also before the start.
    std::string address() const;

    /// What a client program needs.
    std::map<std::string, std::string> environment() const
    {
        return {{"DBUS_SYSTEM_BUS_ADDRESS", address()}};
    }

    /// A folder for the files of what runs on this bus; removed with the object.
    const std::filesystem::path& folder() const { return m_folder; }

private:
    std::filesystem::path m_folder;
    std::unique_ptr<ChildProcess> m_daemon;
};

} // namespace companion::testing
