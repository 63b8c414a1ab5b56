#include "platform/posix/SignalDescriptor.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace companion::testing {

namespace {

bool isReadable(int fd)
{
    pollfd waiting{fd, POLLIN, 0};
    return poll(&waiting, 1, 0) == 1;
}

void (*handlerOf(int signal))(int)
{
    struct sigaction action = {};
    sigaction(signal, nullptr, &action);
    return action.sa_handler;
}

} // namespace

TEST(SignalDescriptorTest, ASignalMakesTheDescriptorReadableAndIsTakenOnce)
{
    SignalDescriptor signals;
    EXPECT_FALSE(isReadable(signals.fd()));
    raise(SIGTERM);
    EXPECT_TRUE(isReadable(signals.fd()));
    EXPECT_EQ(signals.take(), SIGTERM);
    EXPECT_EQ(signals.take(), std::nullopt);
    EXPECT_FALSE(isReadable(signals.fd()));
}

TEST(SignalDescriptorTest, ASignalIsWaitingUntilItIsTaken)
{
    SignalDescriptor signals;
    EXPECT_FALSE(signals.isWaiting());
    raise(SIGTERM);
    EXPECT_TRUE(signals.isWaiting());
    signals.take();
    EXPECT_FALSE(signals.isWaiting());
}

TEST(SignalDescriptorTest, SignalsAreTakenInOrderOfArrival)
{
    SignalDescriptor signals;
    raise(SIGHUP);
    raise(SIGINT);
    raise(SIGINT);
    EXPECT_EQ(signals.take(), SIGHUP);
    EXPECT_EQ(signals.take(), SIGINT);
    EXPECT_EQ(signals.take(), SIGINT);
}

TEST(SignalDescriptorTest, ASignalToAnotherThreadArrivesToo)
{
    SignalDescriptor signals;
    std::thread([] { pthread_kill(pthread_self(), SIGTERM); }).join();
    EXPECT_EQ(signals.take(), SIGTERM);
}

TEST(SignalDescriptorTest, DestructionRestoresTheSignalsAction)
{
    const auto before = handlerOf(SIGTERM);
    {
        SignalDescriptor signals;
        EXPECT_NE(handlerOf(SIGTERM), before);
    }
    EXPECT_EQ(handlerOf(SIGTERM), before);
}

TEST(SignalDescriptorTest, AnIgnoredSignalStaysIgnored)
{
    signal(SIGHUP, SIG_IGN);
    {
        SignalDescriptor signals;
        raise(SIGHUP);
        EXPECT_EQ(signals.take(), std::nullopt);
    }
    EXPECT_EQ(handlerOf(SIGHUP), SIG_IGN);
    signal(SIGHUP, SIG_DFL);
}

TEST(SignalDescriptorTest, ErrnoSurvivesTheHandlerEvenWhenThePipeIsFull)
{
    SignalDescriptor signals;
    errno = ENOTTY;
    for (int i = 0; i < 70'000; ++i)
        raise(SIGINT);
    EXPECT_EQ(errno, ENOTTY);
    EXPECT_EQ(signals.take(), SIGINT);
}

TEST(SignalDescriptorTest, ASecondObjectIsRefusedAndTheFirstKeepsWorking)
{
    SignalDescriptor signals;
    EXPECT_THROW(SignalDescriptor{}, std::logic_error);
    raise(SIGTERM);
    EXPECT_EQ(signals.take(), SIGTERM);
}

TEST(SignalDescriptorTest, TheSignalStillEndsAChildProgram)
{
    SignalDescriptor signals;
    const pid_t child = fork();
    if (child == 0) {
        execl("/bin/sh", "sh", "-c", "kill -TERM $$; exit 0", nullptr);
        _exit(127);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

} // namespace companion::testing
