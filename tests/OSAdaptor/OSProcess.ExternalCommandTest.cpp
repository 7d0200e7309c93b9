#include "OSAdaptor/ProcessOutput.h"
#include "System/Process.h"
#include "support/ServicesFixture.h"
#include "support/TemporaryDirectory.h"

#include <fcntl.h>
#include <sys/stat.h>

using OSProcessExternalCommandTest = ServicesFixture;

static void run(const char *text) {
    OSProcess::runExternalCmd("sh"_ns, script(text), nullptr);
}

TEST_F(OSProcessExternalCommandTest, FailureIsAnErrorWithItsOutput) {
    using namespace std::string_view_literals;
    const std::ptrdiff_t before = openDescriptors();
    run("echo fine >&2");
    run("kill -9 $$"); // counts as success
    EXPECT_ERROR(100227, "sh 3 ", run("exit 3"));
    expectError(100227, "sh 4 a\0b"sv, [] { run("printf 'a\\0b' >&2; exit 4"); });
    const Fault signal(Call::read, 0, 1, EINTR); // loses nothing
    expectError(100227, "sh 255 much\n", [] { run("echo much >&2; exit 255"); });
    EXPECT_EQ(openDescriptors(), before); // without a pool of its own
}

TEST_F(OSProcessExternalCommandTest, NobodyWaitsForWhatItLeavesBehind) {
    const TemporaryDirectory directory;
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    const auto args =
        NSArray::arrayWith({"-c"_ns, "read x <$0 & echo left >&2; exit 5"_ns, directory.string("pipe")});
    expectError(100227, "sh 5 left\n", [&] { OSProcess::runExternalCmd("sh"_ns, args, nullptr); });
    ::close(::open((directory / "pipe").c_str(), O_WRONLY));
}

TEST_F(OSProcessExternalCommandTest, MissingProgramHasTheLogLineAsOutput) {
    const auto outputOf = [](NSString *command, NSArray *args) {
        OSProcess::runExternalCmd(command, args, nullptr);
        EXPECT_EQ(takenErrors(), "(100227, 100228)");
        return replaced(recordingErrorHandler()->raised.back().values, "\\[.*\\]", "[]");
    };
    EXPECT_EQ(outputOf("/no/such"_ns, nullptr),
              "/no/such 17 [] execvp() for '/no/such' failed: No such file or directory!\n\n");
    EXPECT_EQ(outputOf("true"_ns, NSArray::arrayWithObject("a\0b"_ns)),
              "true 17 [] execvp() for 'true' failed: Invalid argument!\n\n");
}

TEST_F(OSProcessExternalCommandTest, EarlierErrorsDoNotCountAndStay) {
    qb::raiseError("src/A", 1, 990001, 1, "x");
    run("exit 1");
    EXPECT_EQ(takenErrors(), "(990001, 100227)");
}

TEST_F(OSProcessExternalCommandTest, WithoutPipeOrProcessItIsNotStarted) {
    for (const Call call : {Call::pipe, sys::canShareMemory() ? Call::startSharingMemory : Call::fork}) {
        const Fault fault(call, 0, 1, EMFILE);
        EXPECT_ERROR(100164, "<nil> Too many open files",
                     OSProcess::runExternalCmd(nullptr, nullptr, nullptr));
    }
}

TEST_F(OSProcessExternalCommandTest, CommandIsTracedFromLevel3) {
    EXPECT_EQ(traced("misc", /*level=*/2, [] { run("exit 0"); }), "");
    const std::string traces = traced("misc", /*level=*/3, [] { run("exit 0"); });
    EXPECT_EQ(replaced(traces, "src/OSAdaptor/OSProcess:L\\(OSProcess\\): |returned \\d+", ""),
              "+runExternalCmd:withArgs:withEnv: -> running 'sh' with args '(\n  -c,\n  \"exit 0\"\n)'\n"
              "-waitForProcessDoHang:exitCode: -> waitpid() \n"
              "-waitForProcessDoHang:exitCode: -> exit code is 0\n");
}
