#include "platform/posix/SyslogLog.h"
#include "tests/support/NetworkNamespace.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <ctime>
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

TEST_F(SystemLogTest, ADaemonThatWasStartedAnewGetsTheNextLineAndOneThatIsGoneHarmsNobody)
{
    SyslogLog log;
    log.log("before");
    EXPECT_THAT(nextMessage(), EndsWith("before"));
    stopDaemon();
    log.log("into the void");
    startDaemon();
    log.log("after");
    EXPECT_THAT(nextMessage(), EndsWith("after"));
}

TEST_F(SystemLogTest, TheTimeOfAMessageIsTheUsersAndInEnglish)
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    SyslogLog log;
    log.log("now");
    const std::string message = nextMessage();
    std::tm told{};
    ASSERT_THAT(strptime(message.c_str(), "<13>%b %d %H:%M:%S ", &told), ::testing::NotNull()) << message;
    EXPECT_EQ(told.tm_mon, local.tm_mon);
    EXPECT_EQ(told.tm_mday, local.tm_mday);
    EXPECT_EQ(told.tm_hour, local.tm_hour);
}

TEST_F(SystemLogTest, ADaemonThatTakesNothingHoldsUpNobody)
{
    SyslogLog log;
    for (int i = 0; i < 3000; ++i) // more than a socket's queue holds
        log.log("line " + std::to_string(i));
    EXPECT_THAT(nextMessage(), EndsWith("line 0"));
}

} // namespace
} // namespace companion::testing
