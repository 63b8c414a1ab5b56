#include "cli/Command.h"
#include "cli/Options.h"
#include "cli/Panelctl.h"
#include "cli/StdioOutput.h"
#include "platform/posix/StandardDescriptors.h"
#include "platform/Version.h"

#include <cstdio>
#include <fcntl.h>
#include <QCoreApplication>
#include <unistd.h>
#include <vector>

using namespace companion::cli;

namespace {

constexpr int neededDescriptors = 48;

/// Qt ends a process that cannot open what it needs to wait for events, so find out before.
bool canOpenDescriptors()
{
    std::vector<int> opened;
    while (opened.size() < neededDescriptors && (opened.empty() || opened.back() >= 0))
        opened.push_back(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
    const bool isEnough = opened.back() >= 0;
    for (const int descriptor : opened)
        close(descriptor);
    return isEnough;
}

int print(const std::string& text)
{
    StdioOutput output;
    output.printText(text);
    return static_cast<int>(output.hasFailed() ? ExitStatus::badUsage : ExitStatus::done);
}

/// The process's exit status when the arguments ask for no command to be run.
std::optional<int> answerAtOnce(const ParsedOptions& parsed)
{
    if (const auto* help = std::get_if<HelpWanted>(&parsed))
        return print(helpText(help->command));
    if (std::holds_alternative<VersionWanted>(parsed))
        return print("panelctl " + companion::versionText() + "\n");
    if (const auto* badUsage = std::get_if<BadUsage>(&parsed)) {
        std::fprintf(stderr, "panelctl: %s (see --help)\n", badUsage->message.c_str());
        return static_cast<int>(ExitStatus::badUsage);
    }
    return std::nullopt;
}

} // namespace

int main(int argc, char** argv)
{
    companion::openStandardDescriptors();
    const ParsedOptions parsed = parseOptions({argv + 1, argv + argc});
    if (const auto status = answerAtOnce(parsed))
        return *status;
    if (!canOpenDescriptors()) {
        std::fprintf(stderr, "panelctl: too few file descriptors: %d must be free (see ulimit -n)\n",
            neededDescriptors);
        return static_cast<int>(ExitStatus::badUsage);
    }

    QCoreApplication application(argc, argv);
    return runCommand(std::get<Options>(parsed));
}
