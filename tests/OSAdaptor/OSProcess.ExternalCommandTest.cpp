#include "System/Process.h"
#include "support/Faults.h"
#include "support/ServicesFixture.h"

#include <regex>
#include <sys/wait.h>

using OSProcessExternalCommandTest = ServicesFixture;

namespace {

void run(const char *script) {
    OSProcess::runExternalCmd("sh"_ns, NSArray::arrayWith({"-c"_ns, NSString::stringWithCString(script)}),
                              nullptr);
}

int freeDescriptor() {
    const int descriptor = ::dup(0);
    ::close(descriptor);
    return descriptor;
}

} // namespace

TEST_F(OSProcessExternalCommandTest, FailureIsAnErrorWithItsOutput) {
    const int before = freeDescriptor();
    run("echo fine >&2");
    run("kill -9 $$"); // counts as success
    for (const char *output : {"", "no such customer\n"}) {
        const ErrorExpectation error(100227);
        run(("printf '" + std::string(output) + "' >&2; exit 3").c_str());
        EXPECT_EQ(error.values(), std::string("sh 3 ") + output);
    }
    {
        const Fault signal(Call::read, 0, 1, EINTR); // loses nothing
        const ErrorExpectation error(100227);
        run("echo much >&2; exit 255");
        EXPECT_EQ(error.values(), "sh 255 much\n");
    }
    EXPECT_EQ(freeDescriptor(), before); // without a pool of its own
}

TEST_F(OSProcessExternalCommandTest, MissingProgramHasTheLogLineAsOutput) {
    OSProcess::runExternalCmd("/no/such"_ns, nullptr, nullptr);
    EXPECT_EQ(describe(ERRORHANDLER->errorIds()), "(100227, 100228)");
    const std::string values = recordingErrorHandler()->raised.back().values;
    EXPECT_TRUE(std::regex_match(
        values,
        std::regex(
            "/no/such 17 \\[.*\\] execvp\\(\\) for '/no/such' failed: No such file or directory!\n\n")))
        << values;
    ERRORHANDLER->clearErrorStack();
}

TEST_F(OSProcessExternalCommandTest, EarlierErrorsDoNotCountAndStay) {
    qb::raiseError("src/A", 1, 990001, 1, "x");
    run("exit 0");
    EXPECT_EQ(describe(ERRORHANDLER->errorIds()), "(990001)");
    run("exit 1");
    EXPECT_EQ(takenErrors(), "(990001, 100227)");
}

TEST_F(OSProcessExternalCommandTest, WithoutPipeOrProcessItIsNotStarted) {
    for (const Call call : {Call::pipe, sys::canShareMemory() ? Call::startSharingMemory : Call::fork}) {
        const Fault fault(call, 0, 1, EMFILE);
        expectError(100164, "<nil> Too many open files",
                    [&] { OSProcess::runExternalCmd(nullptr, nullptr, nullptr); });
    }
    const Fault fault(Call::waitpid, 0, 1, ECHILD);
    const ErrorExpectation error(100234);
    run("exit 9");
    while (::waitpid(-1, nullptr, 0) > 0) {
    }
}

TEST_F(OSProcessExternalCommandTest, CommandIsTracedFromLevel3) {
    activateChannel("misc");
    for (debug = 2; debug <= 3; ++debug) {
        CapturedOutput output;
        run("exit 0");
        const std::string text =
            std::regex_replace(logLines(output.end()), std::regex("Process:\\d+"), "Process:#");
        EXPECT_EQ(text.substr(0, text.find("waitpid")),
                  debug < 3 ? ""
                            : "[T] (P) [] [misc(3) OK] src/OSAdaptor/OSProcess:#(OSProcess): "
                              "+runExternalCmd:withArgs:withEnv: -> running 'sh' with args "
                              "'(\n  -c,\n  \"exit 0\"\n)'\n"
                              "[T] (P) [] [misc(3) OK] src/OSAdaptor/OSProcess:#(OSProcess): "
                              "-waitForProcessDoHang:exitCode: -> ");
    }
}
