#include "platform/posix/BlockedSignals.h"
#include "platform/posix/RoutedInterfaceName.h"
#include "platform/posix/SignalDescriptor.h"
#include "platform/posix/StandardDescriptors.h"
#include "platform/Text.h"
#include "platform/Version.h"
#include "simulator/Options.h"
#include "simulator/Panel.h"
#include "simulator/Recording.h"

#include <csignal>
#include <cstdio>
#include <optional>
#include <system_error>
#include <utility>

#include <QCoreApplication>
#include <QSocketNotifier>

using namespace companion;
using namespace companion::simulator;

namespace {

constexpr int cannotStart = 1;
constexpr int badUsage = 2;

int complain(const std::string& problem, int status)
{
    std::fprintf(stderr, "panel-simulator: %s\n", problem.c_str());
    return status;
}

int run(QCoreApplication& application, Options options, std::optional<Gesture> recording)
{
    // A file size limit, or a connection or pipe that was closed, is an ordinary write error.
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    const SignalDescriptor termination;
    const QSocketNotifier notifier(termination.fd(), QSocketNotifier::Read);
    QObject::connect(&notifier, &QSocketNotifier::activated, &application, &QCoreApplication::quit);
    if (options.address.empty())
        options.address = sourceAddressTowards(internetAddress);
    if (options.address.empty())
        options.address = "127.0.0.1";
    std::optional<Panel> panel;
    {
        const BlockedSignals mainThreadOnly;
        panel.emplace(options, std::move(recording));
    }
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char* argv[])
try {
    companion::openStandardDescriptors();
    QCoreApplication application(argc, argv);
    const auto parsed = parseOptions({argv + 1, argv + argc});
    if (const auto* problem = std::get_if<std::string>(&parsed))
        return complain(*problem, badUsage);
    const auto& options = std::get<Options>(parsed);
    if (options.wantsHelp)
        return std::fputs(helpText().c_str(), stdout) < 0;
    if (options.wantsVersion)
        return std::puts(("panel-simulator " + versionText()).c_str()) < 0;
    if (options.replay.empty())
        return run(application, options, std::nullopt);
    auto recording = readRecording(options.replay);
    if (const auto* problem = std::get_if<std::string>(&recording))
        return complain("--replay " + printable(*problem), badUsage);
    return run(application, options, std::move(std::get<Gesture>(recording)));
} catch (const std::system_error& error) {
    return complain(error.what(), cannotStart);
}
