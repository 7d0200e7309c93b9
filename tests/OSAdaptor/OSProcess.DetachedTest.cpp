#include "OSAdaptor/ProcessOutput.h"
#include "support/Faults.h"
#include "support/ServicesFixture.h"
#include "support/TemporaryDirectory.h"

#include <fcntl.h>
#include <regex>
#include <sys/wait.h>

using OSProcessDetachedTest = ServicesFixture;

namespace {

NSArray *script(const char *text) {
    return NSArray::arrayWith({"-c"_ns, NSString::stringWithCString(text)});
}

bool hasNoChild() {
    return ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
}

/// What is logged, by processes whose ids nobody is told, until all ends of a pipe that `start` gets are
/// closed.
std::string logOf(auto start) {
    CapturedOutput output;
    OSPipe *const held = OSPipe::pipe();
    start(held);
    held->closeWriteHandle();
    contentOf(held);
    return std::regex_replace(output.end(), std::regex("^.*?\\(\\d+\\) \\[\\] "), "");
}

} // namespace

TEST_F(OSProcessDetachedTest, ProgramReadsFromThePipeAndIsNoChild) {
    OSPipe *const input = OSPipe::pipe();
    OSPipe *const output = OSPipe::pipe();
    OSPipe *const errors = OSPipe::pipe();
    const std::int32_t out = output->writeHandle();
    const std::int32_t err = errors->writeHandle();
    NSDictionary *const env = NSDictionary::dictionaryWith({{"QB_END"_ns, "ended"_ns}});
    EXPECT_TRUE(OSProcess::createSubProcessReadingFromPipe(
        input, "sh"_ns, script("echo $PPID; cat; echo $QB_END; echo /proc/self/fd/* >&2"), env, &out, &err));
    EXPECT_FALSE(input->_isReadHandleOpen());
    EXPECT_TRUE(hasNoChild());
    output->closeWriteHandle();
    errors->closeWriteHandle();
    input->getOutputStream()->writeObject("through\n"_ns);
    input->closeWriteHandle();
    const std::string text = contentOf(output);
    EXPECT_NE(std::stoi(text), ::getpid());
    EXPECT_EQ(text.substr(text.find('\n')), "\nthrough\nended\n");
    EXPECT_EQ(contentOf(errors), "/proc/self/fd/0 /proc/self/fd/1 /proc/self/fd/2 /proc/self/fd/3\n");
}

TEST_F(OSProcessDetachedTest, ProgramWritesToThePipe) {
    const TemporaryDirectory directory;
    directory.write("input", "text");
    const std::int32_t in = ::open((directory / "input").c_str(), O_RDONLY | O_CLOEXEC);
    OSPipe *const pipe = OSPipe::pipe();
    EXPECT_TRUE(OSProcess::createSubProcessWritingToPipe(pipe, "cat"_ns, nullptr, nullptr, &in, nullptr));
    EXPECT_FALSE(pipe->_isWriteHandleOpen());
    EXPECT_EQ(contentOf(pipe), "text");
    ::close(in);
}

TEST_F(OSProcessDetachedTest, WithoutMoreProcessesTheAnswerIsNo) {
    OSPipe *const pipe = OSPipe::pipe();
    const Fault first(Call::fork, 0, 1, EAGAIN);
    EXPECT_FALSE(OSProcess::createSubProcessReadingFromPipe(pipe, "true"_ns, nullptr, nullptr));
    EXPECT_EQ(errno, EAGAIN);
    EXPECT_TRUE(pipe->_isReadHandleOpen());
}

TEST_F(OSProcessDetachedTest, CoprocessAnswersWhatItIsAsked) {
    OSPipe *const output = OSPipe::pipe();
    OSPipe *const input = OSPipe::pipe();
    OSProcess::createCoprocessWithPipeForRead(output, input, "sh"_ns, script("read a; echo \"<$a$QB>\""),
                                              NSDictionary::dictionaryWith({{"QB"_ns, "!"_ns}}), nullptr);
    EXPECT_FALSE(output->_isWriteHandleOpen() || input->_isReadHandleOpen());
    EXPECT_TRUE(hasNoChild());
    input->getOutputStream()->writeObject("hello\n"_ns);
    EXPECT_EQ(contentOf(output), "<hello!>\n");
}

TEST_F(OSProcessDetachedTest, FailuresOfTheCoprocessAreLoggedOrRaised) {
    const auto start = [](OSPipe *output, OSPipe *input) {
        return [=](OSPipe *held) {
            const std::int32_t end = held->writeHandle();
            OSProcess::createCoprocessWithPipeForRead(output, input, "cat"_ns, nullptr, nullptr, &end);
        };
    };
    EXPECT_EQ(logOf(start(OSPipe::pipe(), nullptr)), "could not reset stdin for 'cat'\n\n");
    {
        const Fault second(Call::fork, 1, 1, EAGAIN);
        EXPECT_EQ(logOf(start(OSPipe::pipe(), OSPipe::pipe())), "fork for 'cat' failed!\n\n");
    }
    const Fault first(Call::fork, 0, 1, EAGAIN);
    const ErrorExpectation error(100164);
    OSPipe *const output = OSPipe::pipe();
    start(output, OSPipe::pipe())(OSPipe::pipe());
    EXPECT_EQ(error.values(), "cat Resource temporarily unavailable");
    EXPECT_TRUE(output->_isWriteHandleOpen());
    EXPECT_TRUE(hasNoChild());
}
