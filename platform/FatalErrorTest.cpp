#include "platform/FatalError.h"

#include <atomic>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include <unistd.h>

namespace companion::testing {

namespace {

void say(const std::string& text)
{
    std::fprintf(stderr, "%s\n", text.c_str());
}

/// Whether the kernel lists the thread as sleeping, see proc_pid_stat(5).
bool isBlocked(pid_t thread)
{
    std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
    const std::string status(std::istreambuf_iterator<char>(file), {});
    return status.substr(status.rfind(')') + 2, 1) == "S";
}

/// A second thread fails while the first one's handler runs, which goes on once the second one waits.
void failOnTwoThreads()
{
    static std::atomic<bool> isHandling = false;
    static std::atomic<pid_t> second = 0;
    setFatalErrorHandler([](std::string_view what) {
        isHandling = true;
        isHandling.notify_one();
        second.wait(0);
        while (!isBlocked(second))
            std::this_thread::yield();
        say("handled " + std::string(what));
    });
    std::thread other([] {
        isHandling.wait(false);
        second = gettid();
        second.notify_one();
        fatalError("the second");
    });
    fatalError("the first");
}

void failInTheHandler()
{
    setFatalErrorHandler([](std::string_view what) {
        say("handled " + std::string(what));
        fatalError("the handler itself");
    });
    fatalError("the first");
}

} // namespace

TEST(FatalErrorDeathTest, CallsItsHandlerAndTellsStandardErrorWhy)
{
    EXPECT_DEATH(fatalError("no panel address"), "^Fatal error: no panel address\n$");
    EXPECT_DEATH(
        {
            setFatalErrorHandler([](std::string_view what) { say("handled " + std::string(what)); });
            fatalError("no panel address");
        },
        "^handled no panel address\nFatal error: no panel address\n$");
}

TEST(FatalErrorDeathTest, ATextOf4001BytesIsCutAfter4000)
{
    EXPECT_DEATH(fatalError(std::string(4000, 'x') + "y"), "^Fatal error: x+\n$");
}

TEST(FatalErrorDeathTest, AnotherThreadThatFailsMeanwhileDoesNotCutTheHandlerShort)
{
    EXPECT_DEATH(failOnTwoThreads(), "^handled the first\nFatal error: the first\n$");
}

TEST(FatalErrorDeathTest, AHandlerThatFailsItselfAbortsAtOnce)
{
    EXPECT_DEATH(failInTheHandler(), "^handled the first\n$");
}

TEST(FatalErrorDeathTest, AnUncaughtExceptionIsAFatalError)
{
    EXPECT_DEATH(
        {
            makeUncaughtExceptionsFatal();
            std::thread([] { throw std::runtime_error("no room"); }).join();
        },
        "Fatal error: An exception was not caught: no room\n$");
}

} // namespace companion::testing
