#pragma once

#include "app/Options.h"
#include "platform/dbus/SingleInstance.h"
#include "platform/posix/ProgramRestart.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/qt/WidgetMainQueue.h"
#include "ui/DesktopPreferences.h"
#include "ui/MainWindow.h"

#include <memory>
#include <optional>
#include <QSocketNotifier>
#include <string>
#include <vector>

namespace companion {

/// panel-companion put together: the window, and from the end of the splash screen on the dashboard with its adapters.
/// Made after the QApplication and destroyed before it; main thread only.
class DesktopProgram {
public:
    /// `arguments` are those of main, for a fresh run after a fatal error.
    DesktopProgram(const Options& options, char* const* arguments);
    ~DesktopProgram();
    DesktopProgram(const DesktopProgram&) = delete;
    DesktopProgram& operator=(const DesktopProgram&) = delete;

    /// Leaves what was asked for to the program that runs already, unless this is the first one. The exit status then.
    std::optional<int> leaveToRunningProgram();

    /// Shows the main window with the splash screen; the dashboard follows by itself.
    void start();

private:
    class Backend;

    void showDashboard();
    void restartAfter(std::string_view fatalError);
    void endOnSignal();
    void serve(const std::vector<std::string>& urls, const std::string& activationToken);
    void sendFiles();

    const Options m_options;
    ProgramRestart m_restart;
    WidgetMainQueue m_mainQueue;
    MainWindow m_window;

    // Destroyed after the backend, which releases the button: until then a second signal must not end the process.
    SignalDescriptor m_signals;
    QSocketNotifier m_signalNotifier;

    SingleInstance m_instance;
    std::vector<std::string> m_filesToSend; ///< Until the dashboard is there.
    std::unique_ptr<Backend> m_backend;
    std::optional<DesktopPreferences> m_preferences; ///< From the dashboard on.
};

} // namespace companion
