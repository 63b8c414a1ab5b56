#include "cli/Composition.h"
#include "cli/ExitStatus.h"
#include "cli/Options.h"
#include "cli/StdioOutput.h"
#include "platform/posix/StandardDescriptors.h"

#include <cstdio>
#include <QCoreApplication>
#include <unistd.h>

using namespace companion::cli;

namespace {

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
        return print("panelctl " PANEL_COMPANION_VERSION "\n");
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

    QCoreApplication application(argc, argv);
    Composition composition(std::get<Options>(parsed));
    const int status = composition.run();
    if (composition.hasLeftThreadsBehind())
        _exit(status);
    return status;
}
