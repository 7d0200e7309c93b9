#include "OSAdaptor/ProcessOutput.h"
#include "support/ServicesFixture.h"

#include <poll.h>

using OSProcessDetachedTest = ServicesFixture;

static bool hasNoChild() {
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

/// What is logged, by processes whose ids nobody is told, until they have closed the descriptor that `start`
/// gets.
static std::string logOf(auto start) {
    CapturedOutput output;
    OSPipe *const held = OSPipe::pipe();
    const std::int32_t end = held->writeHandle();
    start(&end);
    contentOf(held);
    return replaced(output.end(), "^.*?\\(\\d+\\) \\[\\] ", "");
}

TEST_F(OSProcessDetachedTest, ProgramReadsFromThePipeAndIsNoChild) {
    OSPipe *const input = OSPipe::pipe();
    OSPipe *const output = OSPipe::pipe();
    OSPipe *const errors = OSPipe::pipe();
    const std::int32_t out = output->writeHandle();
    const std::int32_t err = errors->writeHandle();
    const SEL start =
        "createSubProcessReadingFromPipe:withCommand:withArgs:withEnv:stdoutHandle:stderrHandle:"_sel;
    NSDictionary *const env = NSDictionary::dictionaryWith({{"QB_END"_ns, "ended"_ns}});
    EXPECT_EQ(send<BOOL>(OSProcess::cls(), start, input, "sh"_ns,
                         script("echo $PPID; cat; echo $QB_END; echo /proc/self/fd/* >&2"), env, &out, &err),
              YES);
    EXPECT_FALSE(input->_isReadHandleOpen());
    EXPECT_TRUE(hasNoChild());
    input->getOutputStream()->writeObject("through\n"_ns);
    input->closeWriteHandle();
    const std::string text = contentOf(output);
    EXPECT_NE(std::stoi(text), ::getpid());
    EXPECT_EQ(text.substr(text.find('\n')), "\nthrough\nended\n");
    EXPECT_EQ(contentOf(errors), "/proc/self/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\n");
}

TEST_F(OSProcessDetachedTest, ProgramWritesToThePipe) {
    directory_.write("input", "text");
    const std::int32_t in = ::open((directory_ / "input").c_str(), O_RDONLY | O_CLOEXEC);
    OSPipe *const pipe = OSPipe::pipe();
    EXPECT_TRUE(OSProcess::createSubProcessWritingToPipe(pipe, "cat"_ns, nullptr, nullptr, &in, nullptr));
    EXPECT_FALSE(pipe->_isWriteHandleOpen());
    EXPECT_EQ(contentOf(pipe), "text");
    ::close(in);
    OSPipe *const other = OSPipe::pipe();
    EXPECT_TRUE(OSProcess::createSubProcessWritingToPipe(other, "echo"_ns, NSArray::arrayWithObject("x"_ns),
                                                         nullptr));
    EXPECT_EQ(contentOf(other), "x\n");
}

TEST_F(OSProcessDetachedTest, FailuresOfTheProgramAreLogged) {
    const auto writing = [](OSPipe *pipe, NSString *command, const std::int32_t *err) {
        return logOf([=](const std::int32_t *end) {
            EXPECT_TRUE(OSProcess::createSubProcessWritingToPipe(pipe, command, nullptr, nullptr, end, err));
        });
    };
    OSPipe *const pipe = OSPipe::pipe();
    const std::int32_t none = 999;
    EXPECT_EQ(writing(pipe, "/no/such"_ns, nullptr),
              "execvp() for '/no/such' failed: No such file or directory!\n\n");
    EXPECT_EQ(writing(pipe, "true"_ns, nullptr),
              "could not reset stdout for 'true'\n\n"); // closed already
    EXPECT_EQ(writing(OSPipe::pipe(), "true"_ns, &none), "could not reset stderr for 'true'\n\n");
    const auto reading = [](OSPipe *input, const std::int32_t *out) {
        return logOf([=](const std::int32_t *end) {
            EXPECT_TRUE(
                OSProcess::createSubProcessReadingFromPipe(input, "true"_ns, nullptr, nullptr, out, end));
        });
    };
    EXPECT_EQ(reading(nullptr, nullptr), "could not reset stdin for 'true'\n\n");
    EXPECT_EQ(reading(OSPipe::pipe(), &none), "could not reset stdout for 'true'\n\n");
    EXPECT_TRUE(hasNoChild());
}

TEST_F(OSProcessDetachedTest, WithoutMoreProcessesTheAnswerIsNoWhereverThatIsFoundOut) {
    OSPipe *const pipe = OSPipe::pipe();
    const auto start = [&] {
        return OSProcess::createSubProcessReadingFromPipe(pipe, "true"_ns, nullptr, nullptr);
    };
    const Fault first(Call::fork, 0, 1, EAGAIN);
    EXPECT_FALSE(start());
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_TRUE(pipe->_isReadHandleOpen());
    static OSPipe *report;
    report = OSPipe::pipe();
    std::signal(SIGUSR1, [](int) { report->write("waiting: ", 9); });
    const pid_t self = ::getpid();
    const Fault second(Call::fork, 1, 1, EAGAIN);
    const BOOL answer = start();
    if (::getpid() != self) { // the process in between, whose parent still gets its signals
        ::kill(self, SIGUSR1);
        pollfd handled{report->readHandle(), POLLIN, 0};
        ::poll(&handled, 1, /*timeout=*/5000);
        report->write(answer ? "YES" : "NO", 2);
        ::_exit(0);
    }
    EXPECT_TRUE(answer);
    std::signal(SIGUSR1, SIG_DFL);
    EXPECT_EQ(contentOf(report), "waiting: NO");
    EXPECT_TRUE(hasNoChild());
}

TEST_F(OSProcessDetachedTest, CoprocessAnswersWhatItIsAsked) {
    OSPipe *const output = OSPipe::pipe();
    OSPipe *const input = OSPipe::pipe();
    OSProcess::createCoprocessWithPipeForRead(output, input, "sh"_ns,
                                              script("read a; echo \"<$a$QB>\"; echo /proc/self/fd/*"),
                                              NSDictionary::dictionaryWith({{"QB"_ns, "!"_ns}}), nullptr);
    EXPECT_FALSE(output->_isWriteHandleOpen() || input->_isReadHandleOpen());
    EXPECT_TRUE(hasNoChild());
    input->getOutputStream()->writeObject("hello\n"_ns);
    EXPECT_EQ(contentOf(output),
              "<hello!>\n/proc/self/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\n");
}

TEST_F(OSProcessDetachedTest, FailuresOfTheCoprocessAreLoggedOrRaised) {
    const std::int32_t none = 999;
    const auto start = [](OSPipe *output, OSPipe *input, NSString *command,
                          const std::int32_t *err = nullptr) {
        return logOf([=](const std::int32_t *end) {
            OSProcess::createCoprocessWithPipeForRead(output, input, command, nullptr, nullptr,
                                                      err ? err : end);
        });
    };
    EXPECT_EQ(start(nullptr, nullptr, "cat"_ns), "could not reset stdout for 'cat'\n\n");
    EXPECT_EQ(start(OSPipe::pipe(), nullptr, "cat"_ns), "could not reset stdin for 'cat'\n\n");
    EXPECT_EQ(start(OSPipe::pipe(), OSPipe::pipe(), "cat"_ns, &none), "could not reset stderr for 'cat'\n\n");
    const std::int32_t err = STDERR_FILENO;
    EXPECT_EQ(start(OSPipe::pipe(), OSPipe::pipe(), "/no/such"_ns, &err),
              "execvp() for '/no/such' failed: No such file or directory!\n\n");
    const Fault second(Call::fork, 1, 1, EAGAIN);
    EXPECT_EQ(start(OSPipe::pipe(), OSPipe::pipe(), "cat"_ns), "fork for 'cat' failed!\n\n");
    const Fault first(Call::fork, 0, 1, EAGAIN);
    const ErrorExpectation error(100164);
    OSPipe *const output = OSPipe::pipe();
    start(output, OSPipe::pipe(), "cat"_ns);
    EXPECT_EQ(error.values(), "cat Resource temporarily unavailable");
    EXPECT_TRUE(output->_isWriteHandleOpen());
    EXPECT_TRUE(hasNoChild());
}
