#include "System/Clock.h"
#include "System/Files.h"
#include "System/Process.h"
#include "System/Stdio.h"
#include "support/DirectoryFixture.h"
#include "support/SocketPair.h"

#include <sys/time.h>

namespace {

// Each test has a directory, and leaves no descriptor open.
struct SystemTest : DirectoryFixture {
    ~SystemTest() override { EXPECT_EQ(openDescriptors(), descriptorsBefore_); }

    const std::ptrdiff_t descriptorsBefore_ = openDescriptors();
};

int wakeUpDescriptor = -1;

// Runs `handler` on SIGALRM, without the restart flag, every so many milliseconds (0: never).
class Alarm {
public:
    Alarm(int milliseconds, void (*handler)(int)) {
        struct sigaction action {};
        action.sa_handler = handler;
        EXPECT_EQ(sys::sigaction(SIGALRM, &action, nullptr), 0);
        const itimerval timer{{0, milliseconds * 1000}, {0, milliseconds * 1000}};
        EXPECT_EQ(::setitimer(ITIMER_REAL, &timer, nullptr), 0);
    }
    ~Alarm() {
        const itimerval none{};
        ::setitimer(ITIMER_REAL, &none, nullptr);
        ::signal(SIGALRM, SIG_IGN);
    }
};

} // namespace

// Started without standard input: what is opened next would take its place. Without another one to be had,
// nothing is made or emptied either.
TEST_F(SystemTest, NoFileTakesAStandardStreamsDescriptor) {
    const std::string log = directory_ / "log";
    directory_.write("log", "old");
    const int kept = ::fcntl(0, F_DUPFD, 3);
    ::close(0);
    rlimit before;
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit limit{static_cast<rlim_t>(kept) + 1, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &limit);
    EXPECT_EQ(sys::openExclusive((directory_ / "new").c_str(), 0600), -1);
    EXPECT_EQ(errno, EMFILE);
    EXPECT_EQ(sys::fopen(log.c_str(), "w"), nullptr);
    EXPECT_EQ(sys::open(log.c_str(), O_WRONLY | O_TRUNC), -1);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(directory_.names(), Strings{"log"});
    EXPECT_EQ(directory_.read("log"), "old");
    const int opened = sys::open("/dev/null", O_RDONLY);
    const int inside = sys::openat(AT_FDCWD, "/dev/null", O_RDONLY);
    std::FILE *const file = sys::fopen(log.c_str(), "a");
    const Ref<OSPipe> pipe = OSPipe::init();
    const SocketPair sockets;
    ::dup2(kept, 0);
    for (const int descriptor :
         {opened, inside, sys::fileno(file), pipe->readHandle(), pipe->writeHandle(),
          sockets.server->socketHandle(), sockets.client->socketHandle(), sockets.peer->socketHandle()}) {
        EXPECT_GT(descriptor, 2);
        EXPECT_EQ(sys::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    }
    EXPECT_EQ(sys::fclose(file), 0);
    for (const int descriptor : {kept, opened, inside})
        sys::close(descriptor);
}

TEST_F(SystemTest, DirectoriesThatNeedNoSyncAreInSync) {
    const Fault unable(Call::fsync, /*skip=*/0, /*times=*/1, EINVAL);
    EXPECT_EQ(sys::syncDirectory(directory_.path().c_str()), 0);
}

TEST_F(SystemTest, LinesAndBlocksSurviveASignal) {
    char line[8] = {};
    const Ref<OSPipe> pipe = OSPipe::init();
    std::FILE *reader = sys::fdopen(::dup(pipe->readHandle()), "r");
    ASSERT_EQ(pipe->write("ab", 2), 2);
    wakeUpDescriptor = pipe->writeHandle();
    const Alarm alarm(/*milliseconds=*/20, [](int) { sys::writeAll(wakeUpDescriptor, "c\n", 2); });
    EXPECT_EQ(sys::readLine(line, sizeof line, reader), 4u);
    EXPECT_STREQ(line, "abc\n");
    EXPECT_EQ(sys::fread(line + 5, 1, 3, reader), 3u); // more than one signal brings
    EXPECT_EQ(std::string(line + 5, 3), "c\nc");
    sys::fclose(reader);
}

TEST_F(SystemTest, FlushingAllStreamsLosesNothingToSignals) {
    constexpr ssize_t kSize = 199'999; // more than the pipe takes
    const Ref<OSPipe> pipe = OSPipe::init();
    const pid_t slowReader = ::fork();
    if (slowReader == 0) {
        pipe->closeWriteHandle();
        ssize_t count = 0, got = 1;
        for (char block[4096]; got > 0; count += got) {
            sys::sleep(500'000);
            got = sys::read(pipe->readHandle(), block, sizeof block);
        }
        ::_exit(count == kSize ? 0 : 1);
    }
    std::FILE *const writer = sys::fdopen(::dup(pipe->writeHandle()), "w");
    std::vector<char> buffer(kSize + 1);
    std::setvbuf(writer, buffer.data(), _IOFBF, buffer.size());
    std::fwrite(std::string(kSize, 'x').data(), 1, kSize, writer);
    {
        const Alarm alarm(/*milliseconds=*/1, [](int) {});
        EXPECT_EQ(sys::fflush(nullptr), 0);
    }
    EXPECT_EQ(sys::fclose(writer), 0);
    pipe->closeWriteHandle();
    int status = -1;
    EXPECT_EQ(::waitpid(slowReader, &status, 0), slowReader);
    EXPECT_EQ(status, 0);
}

TEST_F(SystemTest, AnswerGoesOutAfterAByteOfTheQuestionWasPushedBack) {
    int ends[2];
    ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
    std::FILE *const stream = sys::fdopen(ends[0], "r+");
    char line[8];
    sys::writeAll(ends[1], "Y\n", 2);
    std::ungetc(std::tolower(std::fgetc(stream)), stream);
    EXPECT_STREQ(std::fgets(line, sizeof line, stream), "y\n");
    sys::print("thanks", 6, stream);
    sys::fclose(stream);
    EXPECT_EQ(sys::read(ends[1], line, sizeof line), 6);
    sys::close(ends[1]);
}

TEST_F(SystemTest, SleepEndsAtItsTimeDespiteSignals) {
    const std::int64_t start = sys::monotonicNanoseconds();
    const Alarm alarm(/*milliseconds=*/10, [](int) {});
    EXPECT_EQ(sys::sleep(40'000'000), 0);
    EXPECT_GE(sys::monotonicNanoseconds() - start, 40'000'000);
}
