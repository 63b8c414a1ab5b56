#include "platform/posix/ProgramRestart.h"

#include "platform/posix/BlockedSignals.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

using namespace std::chrono_literals;

namespace {

constexpr auto variable = "PANEL_COMPANION_STOPPED_BY";

std::chrono::steady_clock::time_point now;

/// Its program is a shell, whose process writes down what `script` prints.
class ProgramRestartTest : public ::testing::Test {
protected:
    ProgramRestartTest()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "restart-XXXXXX";
        m_folder = mkdtemp(pattern.data());
    }
    ~ProgramRestartTest() override
    {
        unsetenv(variable);
        std::filesystem::remove_all(m_folder);
    }

    void makeRestart(const std::string& script)
    {
        m_arguments = {
            "sh", "-c", "{ " + script + "; } >'" + m_folder + "/printed'", "$0", "--panel", "Hall|1 2"};
        m_argumentPointers.clear();
        for (std::string& argument : m_arguments)
            m_argumentPointers.push_back(argument.data());
        m_argumentPointers.push_back(nullptr);
        restart.emplace(m_argumentPointers.data(), "/bin/sh", [] { return now; });
    }

    /// As a fresh run, whose predecessor said so.
    void makeFreshRestart(const std::string& reason)
    {
        setenv(variable, reason.c_str(), 1);
        makeRestart("echo started");
    }

    /// What the process that was started printed, "nothing was started" where none was.
    std::string printed() const
    {
        if (waitpid(-1, nullptr, 0) < 0)
            return "nothing was started";
        std::ifstream file(m_folder + "/printed");
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::optional<ProgramRestart> restart;

private:
    std::string m_folder;
    std::vector<std::string> m_arguments;
    std::vector<char*> m_argumentPointers;
};

} // namespace

TEST_F(ProgramRestartTest, TheFreshRunHasTheArgumentsAndTheReason)
{
    makeRestart("printf '<%s>' \"$@\" \"$PANEL_COMPANION_STOPPED_BY\"");
    restart->start("An upload has no \"data\".");
    EXPECT_EQ(printed(), "<--panel><Hall|1 2><An upload has no \"data\".>");
}

TEST_F(ProgramRestartTest, TheFreshRunHasTheEnvironment)
{
    setenv("PANEL_COMPANION_TEST", "kept", 1);
    makeRestart("printf %s \"$PANEL_COMPANION_TEST\"");
    unsetenv("PANEL_COMPANION_TEST");
    restart->start("why");
    EXPECT_EQ(printed(), "kept");
}

TEST_F(ProgramRestartTest, AReasonOf901BytesIsCutAfter900)
{
    makeRestart("printf %s \"$PANEL_COMPANION_STOPPED_BY\"");
    restart->start(std::string(900, 'x') + "y");
    EXPECT_EQ(printed(), std::string(900, 'x'));
}

TEST_F(ProgramRestartTest, TheFreshRunHasNoneOfTheOpenFiles)
{
    const int descriptor = dup(STDERR_FILENO); // stays open in children
    makeRestart("[ -e /proc/$$/fd/" + std::to_string(descriptor) + " ] && echo open || echo closed");
    restart->start("why");
    EXPECT_EQ(printed(), "closed\n");
    close(descriptor);
}

TEST_F(ProgramRestartTest, AThreadWithBlockedSignalsStartsAProcessThatTheyEnd)
{
    std::signal(SIGPIPE, SIG_IGN);
    for (const int signal : {SIGPIPE, SIGTERM}) {
        makeRestart("kill -" + std::to_string(signal) + " $$");
        std::thread([this] {
            const BlockedSignals all;
            restart->start("why");
        }).join();
        int status = 0;
        waitpid(-1, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == signal) << status;
    }
    std::signal(SIGPIPE, SIG_DFL);
}

TEST_F(ProgramRestartTest, OnlyAFreshRunHasAReasonAndTakesItFromTheEnvironment)
{
    makeRestart("true");
    EXPECT_EQ(restart->reason(), std::nullopt);
    restart.reset();
    makeFreshRestart("An upload has no data.");
    EXPECT_EQ(restart->reason(), "An upload has no data.");
    EXPECT_EQ(std::getenv(variable), nullptr);
}

TEST_F(ProgramRestartTest, AFreshRunLessThanAMinuteOldIsTheLastOne)
{
    makeFreshRestart("why");
    now += 1min - 1ns;
    restart->start("why");
    EXPECT_EQ(printed(), "nothing was started");
}

TEST_F(ProgramRestartTest, AFreshRunOfAMinuteIsFollowedByAnother)
{
    makeFreshRestart("why");
    now += 1min;
    restart->start("why");
    EXPECT_EQ(printed(), "started\n");
}

TEST_F(ProgramRestartTest, NothingIsStartedOnceItIsCancelled)
{
    makeRestart("true");
    restart->cancel();
    restart->start("why");
    EXPECT_EQ(printed(), "nothing was started");
}

TEST_F(ProgramRestartTest, WithoutTheProgramNothingHappens)
{
    char name[] = "gone";
    char* const arguments[] = {name, nullptr};
    ProgramRestart(arguments, "/nonexistent/program").start("why");
    EXPECT_EQ(printed(), "nothing was started");
}

} // namespace companion::testing
