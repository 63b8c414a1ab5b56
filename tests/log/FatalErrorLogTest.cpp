#include "platform/posix/FatalErrorLog.h"

#include "platform/FatalError.h"
#include "platform/posix/SyslogLog.h"
#include "tests/support/Pipe.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion::testing {
namespace {

using ::testing::EndsWith;
using ::testing::KilledBySignal;

/// A log daemon's socket at a path of its own.
class LogSocket {
public:
    LogSocket()
    {
        std::string pattern = std::filesystem::temp_directory_path() / "log-XXXXXX";
        m_folder = mkdtemp(pattern.data());
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path().c_str(), sizeof address.sun_path - 1);
        if (bind(m_descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("no log socket");
    }
    ~LogSocket()
    {
        close(m_descriptor);
        std::filesystem::remove_all(m_folder);
    }
    LogSocket(const LogSocket&) = delete;
    LogSocket& operator=(const LogSocket&) = delete;

    std::string path() const { return m_folder + "/log"; }

    /// The next message, "" when there is none.
    std::string take() const
    {
        std::array<char, 4096> buffer{};
        const ssize_t length = recv(m_descriptor, buffer.data(), buffer.size(), MSG_DONTWAIT);
        return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : "";
    }

private:
    int m_descriptor = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    std::string m_folder;
};

TEST(FatalErrorLogTest, TheMessageIsACriticalOneOfThisProgram)
{
    const LogSocket daemon;
    logFatalError("no main screen", daemon.path().c_str());
    // Facility "user" is 1, severity "critical" is 2: 1 × 8 + 2 (RFC 3164, section 4.1.1).
    EXPECT_EQ(
        daemon.take(), "<10>panel-companion[" + std::to_string(getpid()) + "]: Fatal error: no main screen");
}

TEST(FatalErrorLogTest, ATextWithLineBreaksAndPercentSignsIsOneLine)
{
    const LogSocket daemon;
    logFatalError("100%s\n%n\x1b[2J", daemon.path().c_str());
    EXPECT_THAT(daemon.take(), EndsWith("Fatal error: 100%s %n [2J"));
}

TEST(FatalErrorLogTest, ALongTextIsCut)
{
    const LogSocket daemon;
    logFatalError(std::string(5000, 'x'), daemon.path().c_str());
    EXPECT_THAT(daemon.take(), ::testing::SizeIs(::testing::AllOf(::testing::Gt(900), ::testing::Lt(1024))));
}

TEST(FatalErrorLogTest, ADaemonThatTakesNothingBlocksNobody)
{
    const LogSocket daemon;
    for (int i = 0; i < 2000; ++i) // more than a socket's queue holds
        logFatalError("no main screen", daemon.path().c_str());
    EXPECT_NE(daemon.take(), "");
}

TEST(FatalErrorLogTest, WithoutADaemonNothingHappens)
{
    logFatalError("no main screen", "/nonexistent/log");
}

TEST(FatalErrorLogDeathTest, AsTheHandlerItTellsTheLogAndTheProcessAborts)
{
    const LogSocket daemon;
    EXPECT_EXIT(
        {
            setFatalErrorHandler([&](std::string_view what) { logFatalError(what, daemon.path().c_str()); });
            fatalError("no main screen");
        },
        KilledBySignal(SIGABRT), "Fatal error: no main screen");
    EXPECT_THAT(daemon.take(), EndsWith(": Fatal error: no main screen"));
}

/// Makes a pipe that takes nothing more the standard error, in which a writer's thread blocks.
void failWithHungStandardError(const std::string& logSocket)
{
    const Pipe pipe(O_CLOEXEC | O_NONBLOCK);
    while (write(pipe.writer(), "xxxx", 4) > 0) { }
    fcntl(pipe.writer(), F_SETFL, 0);
    dup2(pipe.writer(), STDERR_FILENO);
    SyslogLog log;
    log.log("a line that cannot be written");
    setFatalErrorHandler([&](std::string_view what) { logFatalError(what, logSocket.c_str()); });
    fatalError("no main screen");
}

TEST(FatalErrorLogDeathTest, AHungStandardErrorKeepsTheLineNeitherFromTheLogNorTheProcessFromAborting)
{
    const LogSocket daemon;
    EXPECT_EXIT(failWithHungStandardError(daemon.path()), KilledBySignal(SIGABRT), "");
    EXPECT_THAT(daemon.take(), EndsWith(": Fatal error: no main screen"));
}

TEST(FatalErrorLogDeathTest, AStandardErrorWithoutAReaderStillEndsInSigabrt)
{
    EXPECT_EXIT(
        {
            std::signal(SIGPIPE, SIG_DFL);
            Pipe pipe;
            pipe.closeReader();
            dup2(pipe.writer(), STDERR_FILENO);
            fatalError("no main screen");
        },
        KilledBySignal(SIGABRT), "");
}

} // namespace
} // namespace companion::testing
