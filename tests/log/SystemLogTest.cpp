#include "platform/FatalError.h"
#include "platform/posix/FatalErrorLog.h"
#include "platform/posix/SyslogLog.h"
#include "tests/support/NetworkNamespace.h"
#include "tests/support/Pipe.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace companion::testing {
namespace {

using ::testing::AllOf;
using ::testing::EndsWith;
using ::testing::StartsWith;

/// Sees an empty /dev of its own, and listens at /dev/log there. This process never sees the real one again.
class SystemLogTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (const auto reason = enterNetworkNamespace()) // for the rights that its root has
            GTEST_SKIP() << *reason;
        if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0
            || mount("tmpfs", "/dev", "tmpfs", 0, nullptr) != 0)
            GTEST_SKIP() << "no mount namespace: " << std::strerror(errno) << namespaceRemedy();
        startDaemon();
    }
    ~SystemLogTest() override { stopDaemon(); }

    void startDaemon()
    {
        m_daemon = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, "/dev/log");
        ASSERT_EQ(bind(m_daemon, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }

    void stopDaemon()
    {
        if (m_daemon < 0)
            return; // the real one must stay
        close(std::exchange(m_daemon, -1));
        unlink("/dev/log");
    }

    std::string nextMessage() const
    {
        pollfd waiting{m_daemon, POLLIN, 0};
        if (poll(&waiting, 1, 10'000) != 1)
            return "";
        std::array<char, 65536> buffer{};
        const ssize_t length = recv(m_daemon, buffer.data(), buffer.size(), 0);
        return length > 0 ? std::string(buffer.data(), static_cast<std::size_t>(length)) : "";
    }

    int m_daemon = -1;
};

TEST_F(SystemLogTest, EachLineIsOneMessageOfThisProgramAsItWasGiven)
{
    SyslogLog log;
    log.log("Resolved address for service 100%s %n");
    log.log("two\nlines");
    const std::string identity = "panel-companion[" + std::to_string(getpid()) + "]: ";
    // Facility "user" is 1, severity "notice" is 5: 1 × 8 + 5.
    EXPECT_THAT(nextMessage(),
        AllOf(StartsWith("<13>"), EndsWith(identity + "Resolved address for service 100%s %n")));
    EXPECT_THAT(nextMessage(), EndsWith(identity + "two\\nlines"));
}

TEST_F(SystemLogTest, ALineOf8192BytesIsOneMessage)
{
    SyslogLog log;
    log.log(std::string(8192, 'x'));
    EXPECT_THAT(nextMessage(), EndsWith(": " + std::string(8192, 'x')));
}

TEST_F(SystemLogTest, ARestartedDaemonGetsTheNextLine)
{
    SyslogLog log;
    log.log("before");
    EXPECT_THAT(nextMessage(), EndsWith("before"));
    stopDaemon();
    log.log("without a daemon");
    startDaemon();
    log.log("after");
    std::string message = nextMessage();
    if (message.ends_with("without a daemon")) // the writer may reach it only now
        message = nextMessage();
    EXPECT_THAT(message, EndsWith("after"));
}

/// More than a socket's queue holds.
void logThreeThousandLines(SystemLog& log)
{
    for (int i = 0; i < 3000; ++i)
        log.log("line " + std::to_string(i));
}

TEST_F(SystemLogTest, AHungDaemonBlocksNeitherTheCallerNorStandardErrorAndGetsAllLinesLater)
{
    Pipe standardError;
    {
        const Redirected redirected(STDERR_FILENO, standardError.writer());
        SyslogLog log;
        logThreeThousandLines(log);
    }
    standardError.closeWriter();
    EXPECT_THAT(standardError.readAll(), AllOf(StartsWith("line 0\nline 1\n"), EndsWith("\nline 2999\n")));
    for (int i = 0; i < 3000;
         ++i) // also lets the writer's thread end, which the next test's fork would cut off in syslog(3)
        ASSERT_THAT(nextMessage(), EndsWith(": line " + std::to_string(i)));
}

TEST_F(SystemLogTest, AFatalErrorWhileTheDaemonTakesNothingStillEndsTheProcess)
{
    EXPECT_EXIT(
        {
            SyslogLog log;
            logThreeThousandLines(log);
            setFatalErrorHandler([](std::string_view what) { logFatalError(what); });
            fatalError("no main screen");
        },
        ::testing::KilledBySignal(SIGABRT), "Fatal error: no main screen");
}

} // namespace
} // namespace companion::testing
