// Whatever way a program ends that holds the mouse button, the button is not held any more.
#include "tests/support/XRecorder.h"
#include "tests/support/XvfbServer.h"

#include <gtest/gtest.h>

#include <csignal>

namespace companion::testing {

class HeldButtonTest : public ::testing::Test {
protected:
    void start(const std::string& way)
    {
        program = std::make_unique<ChildProcess>(std::vector<std::string>{POSTER_PROGRAM, way},
            std::map<std::string, std::string>{{"DISPLAY", xvfb.display()}});
        ASSERT_TRUE(program->waitForOutput("held")) << program->output();
    }

    const std::string pressed = "motion 100,200 press1 100,200";
    const std::string pressedAndReleased = pressed + " release1 100,200";
    XvfbServer xvfb;
    XRecorder recorder{xvfb.display()};
    std::unique_ptr<ChildProcess> program;
};

TEST_F(HeldButtonTest, IsReleasedWhenTheProgramReturnsFromMain)
{
    start("destroy");
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_EQ(recorder.takeText(), pressedAndReleased);
}

TEST_F(HeldButtonTest, IsReleasedOnSigterm)
{
    start("signal");
    EXPECT_EQ(recorder.takeText(), pressed);
    program->sendSignal(SIGTERM);
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_EQ(recorder.takeText(), "release1 100,200");
}

TEST_F(HeldButtonTest, IsReleasedOnSigint)
{
    start("signal");
    program->sendSignal(SIGINT);
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_EQ(recorder.takeText(), pressedAndReleased);
}

TEST_F(HeldButtonTest, IsReleasedOnAFatalErrorInAnotherThread)
{
    start("fatal");
    EXPECT_EQ(program->waitForExit(), 128 + SIGABRT);
    EXPECT_EQ(recorder.takeText(), pressedAndReleased);
}

TEST_F(HeldButtonTest, AServerThatHangsDoesNotKeepAFatalErrorFromEndingTheProgram)
{
    start("fatal once told");
    xvfb.pause();
    program->write("now\n");
    EXPECT_EQ(program->waitForExit(std::chrono::seconds(5)), 128 + SIGABRT);
    xvfb.resume();
}

TEST_F(HeldButtonTest, IsReleasedWhenNobodyCatchesAnExceptionOfAnotherThread)
{
    start("exception");
    EXPECT_EQ(program->waitForExit(), 128 + SIGABRT);
    EXPECT_NE(
        program->output().find("Fatal error: An exception was not caught: for the test"), std::string::npos)
        << program->output();
    EXPECT_EQ(recorder.takeText(), pressedAndReleased);
}

TEST_F(HeldButtonTest, StaysHeldAfterSigkillUntilTheNextProgramStarts)
{
    start("hang");
    program->sendSignal(SIGKILL);
    EXPECT_EQ(program->waitForExit(), 128 + SIGKILL);
    EXPECT_EQ(recorder.takeText(), pressed);
    start("destroy");
    EXPECT_EQ(program->waitForExit(), 0);
    EXPECT_EQ(recorder.takeText(), "release1 100,200 press1 100,200 release1 100,200");
}

} // namespace companion::testing
