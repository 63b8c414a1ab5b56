#include "app/AppDelegate.h"
#include "app/DesktopProgram.h"
#include "app/Options.h"
#include "platform/avahi/SystemBus.h"
#include "platform/FatalError.h"
#include "platform/posix/FatalErrorLog.h"
#include "platform/posix/StandardDescriptors.h"
#include "platform/Version.h"
#include "translations/Language.h"
#include "ui/Accessibility.h"
#include "ui/FocusRing.h"
#include "ui/Theme.h"

#include <chrono>
#include <cstdio>
#include <malloc.h>
#include <QApplication>
#include <QPixmapCache>

using namespace companion;

namespace {

/// Once a large block has been freed, the C library would take later ones of up to that size from the heap, where files and
/// answers that come and go leave holes: a day of lessons would cost memory that nobody uses. Naming the threshold, even
/// its default, keeps it where it is (mallopt(3)).
void giveLargeBlocksBack()
{
#ifdef M_MMAP_THRESHOLD
    constexpr int defaultThreshold = 128 << 10;
    mallopt(M_MMAP_THRESHOLD, defaultThreshold);
#endif
}

/// Connecting to a session bus that accepts the connection but never replies would block Qt forever: on the first use of
/// the bus, which may be the desktop theme's. This run then goes on as if there were no bus.
void avoidSilentSessionBus()
{
    QByteArray address = qgetenv("DBUS_SESSION_BUS_ADDRESS");
    if (address.isEmpty()) // sd_bus_default_user(3)
        address = "unix:path=" + qgetenv("XDG_RUNTIME_DIR") + "/bus";
    if (!isBusSilent(address, std::chrono::seconds(2)))
        return;
    std::fputs("panel-companion: the session bus does not answer; starting without it\n", stderr);
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/dev/null"); // which refuses connections at once
}

/// The process's exit status when the arguments ask for no window.
std::optional<int> answerWithoutWindow(const ParsedOptions& parsed)
{
    if (std::holds_alternative<HelpWanted>(parsed)) {
        std::fputs(helpText().c_str(), stdout);
        return 0;
    }
    if (std::holds_alternative<VersionWanted>(parsed)) {
        std::puts(("panel-companion " + versionText()).c_str());
        return 0;
    }
    if (const auto* badUsage = std::get_if<BadUsage>(&parsed)) {
        std::fprintf(stderr, "panel-companion: %s (see --help)\n", badUsage->message.c_str());
        return 2;
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    openStandardDescriptors();
    giveLargeBlocksBack();
    makeUncaughtExceptionsFatal();
    setFatalErrorHandler([](std::string_view what) { logFatalError(what); }); // until a button may be held
    const ParsedOptions parsed = parseOptions({argv + 1, argv + argc});
    if (const auto status = answerWithoutWindow(parsed))
        return *status;

    avoidSilentSessionBus();
    int argumentsOfToolkit = 1; // its own options have no place in ours
    QApplication application(argumentsOfToolkit, argv);
    QApplication::setApplicationName(QStringLiteral("panel-companion"));
    QApplication::setApplicationDisplayName(QStringLiteral("Panel Companion"));
    QApplication::setDesktopFileName(QStringLiteral("arpa.home.PanelCompanion"));
    AppDelegate delegate;
    QApplication::setQuitOnLastWindowClosed(delegate.applicationShouldTerminateAfterLastWindowClosed());
    useDesktopLanguage(application);
    Theme::applyColors(application);
    // Every file dialog adds pictures of its own to the toolkit's cache, a third of a mebibyte, and nobody looks at them again.
    QPixmapCache::setCacheLimit(2 << 10); // KiB; the default is five times that
    installAccessibility();
    installFocusRing();

    DesktopProgram program(std::get<Options>(parsed), argv);
    if (const auto status = program.leaveToRunningProgram())
        return *status;
    program.start();
    delegate.applicationDidFinishLaunching();
    const int status = QApplication::exec();
    delegate.applicationWillTerminate();
    return status;
}
