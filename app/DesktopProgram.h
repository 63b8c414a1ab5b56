#pragma once

#include "app/Options.h"
#include "platform/posix/ProgramRestart.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/qt/WidgetMainQueue.h"
#include "ui/MainWindow.h"

#include <memory>
#include <QSocketNotifier>

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

    /// Shows the main window with the splash screen; the dashboard follows by itself.
    void start();

private:
    class Backend;

    void showDashboard();
    void restartAfter(std::string_view fatalError);
    void endOnSignal();

    const Options m_options;
    ProgramRestart m_restart;
    WidgetMainQueue m_mainQueue;
    MainWindow m_window;

    // Destroyed after the backend, which releases the button: until then a second signal must not end the process.
    SignalDescriptor m_signals;
    QSocketNotifier m_signalNotifier;

    std::unique_ptr<Backend> m_backend;
};

} // namespace companion
