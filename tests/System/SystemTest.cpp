#include "System/Clock.h"
#include "System/Files.h"
#include "System/Iconv.h"
#include "System/Library.h"
#include "System/Memory.h"
#include "System/Process.h"
#include "System/Sockets.h"
#include "System/Stdio.h"
#include "support/Faults.h"
#include "support/OpenDescriptors.h"
#include "support/TemporaryDirectory.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <netinet/in.h>
#include <string>
#include <sys/time.h>
#include <sys/wait.h>
#include <vector>

using namespace std::string_literals;

namespace {

// Each test has a directory, and leaves no descriptor open.
class SystemTest : public testing::Test {
protected:
    ~SystemTest() override { EXPECT_EQ(openDescriptors(), descriptorsBefore_); }

    std::string path(const char *name) const { return directory_ / name; }

    const TemporaryDirectory directory_;

private:
    const std::ptrdiff_t descriptorsBefore_ = openDescriptors();
};

bool isCloseOnExec(int descriptor) {
    return sys::fcntl(descriptor, F_GETFD) == FD_CLOEXEC;
}

// Two connected descriptors that close themselves: a reading and a writing end.
struct Pipe {
    Pipe() { EXPECT_EQ(sys::pipe(ends), 0); }
    ~Pipe() {
        sys::close(ends[0]);
        sys::close(ends[1]);
    }
    int ends[2] = {-1, -1};
};

int wakeUpDescriptor = -1;

// Runs `handler` on SIGALRM, without the restart flag, every so many milliseconds (0: never).
class Alarm {
public:
    Alarm(int milliseconds, void (*handler)(int)) {
        struct sigaction action {};
        action.sa_handler = handler;
        EXPECT_EQ(sys::sigaction(SIGALRM, &action, &old_), 0);
        const itimerval timer{{0, milliseconds * 1000}, {0, milliseconds * 1000}};
        EXPECT_EQ(::setitimer(ITIMER_REAL, &timer, nullptr), 0);
    }
    ~Alarm() {
        const itimerval none{};
        ::setitimer(ITIMER_REAL, &none, nullptr);
        sys::sigaction(SIGALRM, &old_, nullptr);
    }

private:
    struct sigaction old_ {};
};

} // namespace

TEST_F(SystemTest, FaultSkipsStrikesAndEndsWithItsScope) {
    const CallCounter counter;
    {
        Fault third(Call::access, /*skip=*/2, /*times=*/1, EACCES);
        Fault other(Call::lstat, /*skip=*/0, /*times=*/0, EIO);
        const int results[] = {sys::access("/", F_OK), sys::access("/", F_OK), sys::access("/", F_OK)};
        EXPECT_EQ(errno, EACCES);
        EXPECT_EQ(results[0] + results[1] * 2 + results[2] * 4, -4);
        EXPECT_EQ(sys::access("/", F_OK), 0); // struck once, no more
        EXPECT_EQ(third.hits(), 1u);
        EXPECT_EQ(other.hits(), 0u);
        Fault always(Call::any, /*skip=*/0, /*times=*/0, ENOMEM);
        EXPECT_EQ(sys::access("/", F_OK), -1);
        EXPECT_EQ(sys::allocate(1), nullptr);
    }
    EXPECT_EQ(sys::access("/", F_OK), 0);
    EXPECT_EQ(counter.calls(Call::access), 6u);
    EXPECT_EQ(counter.calls(Call::allocate), 1u);
    EXPECT_EQ(counter.calls(Call::any), 7u);
    EXPECT_EQ(sys::nameOfCall(Call::copy_file_range), "copy_file_range");
}

TEST_F(SystemTest, KillStrikesBeforeTheCall) {
    const std::string file = path("never");
    const pid_t child = sys::fork();
    if (child == 0) {
        Fault fault(Call::any, /*skip=*/1, sys::KillProcess());
        sys::mkdir(path("made").c_str(), 0700);
        sys::mkdir(file.c_str(), 0700);
        sys::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(sys::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    EXPECT_EQ(sys::access(path("made").c_str(), F_OK), 0);
    EXPECT_EQ(sys::access(file.c_str(), F_OK), -1);
}

TEST_F(SystemTest, TransfersOutlastSignalsAndShortWrites) {
    const std::string text(1000, 'x');
    const int file = sys::openExclusive(path("all").c_str(), 0600);
    {
        const CallCounter counter;
        Fault shortly(Call::write, /*skip=*/0, /*times=*/0, sys::ShortTransfer{300});
        Fault storm(Call::write, /*skip=*/0, /*times=*/5, EINTR);
        EXPECT_EQ(sys::writeAll(file, text.data(), text.size()), 0);
        EXPECT_EQ(counter.calls(Call::write), 9u); // five in vain, 300, 300, 300, 100
    }
    EXPECT_EQ(directory_.read("all"), text);
    std::string back(1200, '-');
    ASSERT_EQ(sys::lseek(file, 0, SEEK_SET), 0);
    {
        const CallCounter counter;
        Fault shortly(Call::read, /*skip=*/0, /*times=*/3, sys::ShortTransfer{7});
        Fault storm(Call::read, /*skip=*/1, /*times=*/2, EINTR);
        EXPECT_EQ(sys::readAll(file, back.data(), back.size()), 1000);
        EXPECT_EQ(back.substr(0, 1000), text);
        EXPECT_EQ(counter.calls(Call::read), 5u); // 7, two in vain that both faults have seen, 993, the end
    }
    {
        Fault full(Call::write, /*skip=*/0, /*times=*/1, ENOSPC);
        EXPECT_EQ(sys::writeAll(file, "y", 1), -1);
        EXPECT_EQ(errno, ENOSPC);
        Fault signal(Call::write, /*skip=*/0, /*times=*/1, EINTR);
        EXPECT_EQ(sys::write(file, "y", 1, sys::OnSignal::report), -1);
        EXPECT_EQ(errno, EINTR);
        Fault nothing(Call::write, /*skip=*/0, /*times=*/0, sys::ShortTransfer{0});
        EXPECT_EQ(sys::writeAll(file, "y", 1), -1); // rather than for ever
    }
    EXPECT_EQ(directory_.read("all"), text);
    sys::close(file);
}

TEST_F(SystemTest, StreamsWithoutABufferOutlastSignals) {
    std::FILE *const file = sys::fopen(path("line").c_str(), "w");
    ASSERT_EQ(std::setvbuf(file, nullptr, _IONBF, 0), 0);
    Fault shortly(Call::fwrite, /*skip=*/0, /*times=*/0, sys::ShortTransfer{3});
    Fault storm(Call::fwrite, /*skip=*/1, /*times=*/5, EINTR);
    EXPECT_EQ(sys::fwrite("text", 1, 4, file), 3u);
    EXPECT_EQ(sys::fwrite("abc", 1, 3, file), 3u);
    EXPECT_EQ(storm.hits(), 5u);
    EXPECT_FALSE(sys::ferror(file));
    EXPECT_EQ(sys::fclose(file), 0);
    EXPECT_EQ(directory_.read("line"), "texabc");
}

// Started without standard input: what is opened next would take its place.
TEST_F(SystemTest, NoFileTakesAStandardStreamsDescriptor) {
    const int kept = sys::dup(0);
    ::close(0);
    const int opened = sys::open("/dev/null", O_RDONLY);
    const int inside = sys::openat(AT_FDCWD, "/dev/null", O_RDONLY);
    const int duplicate = sys::dup(opened);
    std::FILE *const file = sys::fopen(path("log").c_str(), "a");
    const Pipe pipe;
    ::dup2(kept, 0);
    for (const int descriptor : {opened, inside, duplicate, sys::fileno(file), pipe.ends[0], pipe.ends[1]}) {
        EXPECT_GT(descriptor, 2);
        EXPECT_TRUE(isCloseOnExec(descriptor));
    }
    EXPECT_EQ(sys::fwrite("a", 1, 1, file), 1u);
    EXPECT_EQ(sys::fclose(file), 0);
    EXPECT_EQ(directory_.read("log"), "a");
    for (const int descriptor : {kept, opened, inside, duplicate})
        sys::close(descriptor);
}

TEST_F(SystemTest, NewDescriptorsAreCloseOnExec) {
    directory_.write("file", "text");
    const Pipe ends;
    std::vector<int> descriptors = {sys::open(path("file").c_str(), O_RDONLY),
                                    sys::openExclusive(path("new").c_str(), 0600), sys::dup(ends.ends[0]),
                                    sys::socket(AF_UNIX, SOCK_STREAM, 0)};
    DIR *directory = sys::opendir(directory_.path().c_str());
    std::FILE *file = sys::fopen(path("file").c_str(), "r+b");
    ASSERT_TRUE(directory && file);
    EXPECT_TRUE(isCloseOnExec(ends.ends[0]) && isCloseOnExec(ends.ends[1]));
    EXPECT_TRUE(isCloseOnExec(::dirfd(directory)));
    EXPECT_TRUE(isCloseOnExec(sys::fileno(file)));
    ASSERT_EQ(sys::freopen(path("file").c_str(), "rb", file), file);
    EXPECT_TRUE(isCloseOnExec(sys::fileno(file)));
    for (const int descriptor : descriptors) {
        EXPECT_TRUE(isCloseOnExec(descriptor));
        EXPECT_EQ(sys::dup2(descriptor, descriptor), descriptor); // the way to hand it on to a program
        EXPECT_EQ(sys::fcntl(descriptor, F_GETFD), 0);
        EXPECT_EQ(sys::close(descriptor), 0);
    }
    EXPECT_EQ(sys::closedir(directory), 0);
    EXPECT_EQ(sys::fclose(file), 0);
}

TEST_F(SystemTest, StandardStreamStaysInheritable) {
    directory_.write("input", "text");
    const pid_t child = sys::fork();
    if (child == 0)
        sys::_exit(sys::freopen(path("input").c_str(), "r", stdin) && !isCloseOnExec(0) &&
                           sys::fgetc(stdin) == 't'
                       ? 0
                       : 1);
    int status = -1;
    EXPECT_EQ(sys::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

TEST_F(SystemTest, ExclusiveOpenRefusesWhateverIsThere) {
    directory_.write("victim", "precious");
    ASSERT_EQ(sys::symlink(path("victim").c_str(), path("planted").c_str()), 0);
    ASSERT_EQ(sys::symlink(path("absent").c_str(), path("dangling").c_str()), 0);
    for (const char *name : {"victim", "planted", "dangling"}) {
        EXPECT_EQ(sys::openExclusive(path(name).c_str(), 0600), -1) << name;
        EXPECT_EQ(errno, EEXIST) << name;
    }
    EXPECT_EQ(directory_.read("victim"), "precious");
    EXPECT_EQ(sys::access(path("absent").c_str(), F_OK), -1);
}

TEST_F(SystemTest, ReleasingCallsReleaseAndReport) {
    Fault faults[] = {{Call::close, 0, 1, EIO},
                      {Call::close, 1, 1, EINTR},
                      {Call::fclose, 0, 1, ENOSPC},
                      {Call::closedir, 0, 1, EIO}};
    EXPECT_EQ(sys::close(sys::open("/", O_RDONLY)), -1);
    EXPECT_EQ(errno, EIO);
    EXPECT_EQ(sys::close(sys::open("/", O_RDONLY)), 0); // interrupted, but closed
    EXPECT_EQ(sys::fclose(sys::fopen(path("file").c_str(), "w")), EOF);
    EXPECT_EQ(errno, ENOSPC);
    EXPECT_EQ(sys::closedir(sys::opendir("/")), -1);
    for (const Fault &fault : faults)
        EXPECT_EQ(fault.hits(), 1u);
}

TEST_F(SystemTest, EveryFailureOfASyncIsReportedAndLeaksNothing) {
    const CallCounter counter;
    ASSERT_EQ(sys::syncDirectory(directory_.path().c_str()), 0);
    const auto calls = static_cast<unsigned>(counter.calls(Call::any));
    EXPECT_EQ(calls, 3u);
    for (unsigned index = 0; index < calls; ++index) {
        Fault fault(Call::any, index, /*times=*/1, EDQUOT);
        EXPECT_EQ(sys::syncDirectory(directory_.path().c_str()), -1) << index;
        EXPECT_EQ(errno, EDQUOT) << index;
    }
    Fault unable(Call::fsync, 0, 1, EINVAL);
    EXPECT_EQ(sys::syncDirectory(directory_.path().c_str()), 0);
}

TEST_F(SystemTest, DirectoryReadingTellsTheEndFromAnError) {
    directory_.write("one", "");
    DIR *directory = sys::opendir(directory_.path().c_str());
    ASSERT_NE(directory, nullptr);
    int names = 0;
    {
        Fault signal(Call::readdir, /*skip=*/3, /*times=*/1, EINTR); // at the end
        for (errno = EIO; sys::readdir(directory);)
            ++names;
        EXPECT_EQ(errno, 0);
    }
    EXPECT_EQ(names, 3); // with "." and ".."
    Fault broken(Call::readdir, 0, 1, EIO);
    EXPECT_EQ(sys::readdir(directory), nullptr);
    EXPECT_EQ(errno, EIO);
    sys::closedir(directory);
}

TEST_F(SystemTest, FilesKeepSixtyFourBitOffsetsAndTimes) {
    const int file = sys::openExclusive(path("large").c_str(), 0640);
    const off_t size = off_t{3} << 30;
    const timespec times[2] = {{std::time_t{5'000'000'000}, 0}, {std::time_t{5'000'000'000}, 0}};
    ASSERT_EQ(sys::ftruncate(file, size), 0);
    ASSERT_EQ(sys::utimensat(path("large").c_str(), times), 0);
    struct stat info {};
    ASSERT_EQ(sys::stat(path("large").c_str(), &info), 0);
    EXPECT_EQ(info.st_size, size);
    EXPECT_EQ(static_cast<std::int64_t>(info.st_mtime), 5'000'000'000);
    EXPECT_EQ(sys::lseek(file, 0, SEEK_END), size);
    EXPECT_EQ(info.st_mode & 0777, 0640u & ~sys::currentUmask());
    sys::close(file);
}

TEST_F(SystemTest, UmaskIsOnlyLookedAt) {
    const mode_t before = ::umask(027);
    EXPECT_EQ(sys::currentUmask(), 027u);
    EXPECT_EQ(::umask(before), 027u);
}

TEST_F(SystemTest, StreamFaultsSetTheErrorFlag) {
    directory_.write("file", "abcdef");
    std::FILE *file = sys::fopen(path("file").c_str(), "r+");
    ASSERT_NE(file, nullptr);
    char buffer[8] = {};
    const std::function<bool()> reads[] = {[&] { return sys::fread(buffer, 1, 1, file) == 1; },
                                           [&] { return sys::fgets(buffer, 2, file) != nullptr; },
                                           [&] { return sys::fgetc(file) != EOF; }};
    for (const auto &succeeds : reads) {
        {
            Fault fault(Call::any, 0, 1, EIO);
            EXPECT_FALSE(succeeds());
            EXPECT_EQ(errno, EIO);
            EXPECT_TRUE(sys::ferror(file));
        }
        sys::clearerr(file);
        EXPECT_FALSE(sys::ferror(file));
        Fault storm(Call::any, 0, 3, EINTR);
        EXPECT_TRUE(succeeds());
        EXPECT_FALSE(sys::ferror(file));
    }
    EXPECT_EQ(buffer, "b"s);
    EXPECT_EQ(sys::rewind(file), 0);
    Fault cut(Call::fread, 0, 1, sys::ShortTransfer{5});
    EXPECT_EQ(sys::fread(buffer, 2, 3, file), 2u);
    EXPECT_EQ(buffer, "abcde"s);
    EXPECT_EQ(sys::fread(buffer, 1, sizeof buffer, file), 1u); // up to the end
    EXPECT_EQ(errno, 0);
    EXPECT_EQ(sys::fread(buffer, SIZE_MAX, 2, file), 0u);
    EXPECT_EQ(errno, EOVERFLOW);
    sys::fclose(file);
}

TEST_F(SystemTest, StreamWritesReportWhatTheyDidNotTake) {
    std::FILE *file = sys::fopen(path("file").c_str(), "w");
    ASSERT_NE(file, nullptr);
    Fault cut(Call::fwrite, /*skip=*/1, /*times=*/1, sys::ShortTransfer{3});
    EXPECT_EQ(sys::fwrite("abcd", 4, 1, file), 1u);
    EXPECT_EQ(sys::fwrite("abcd", 4, 1, file), 0u);
    EXPECT_EQ(sys::fputs("ef", file) < 0 || sys::fputc('g', file) != 'g', false);
    Fault full(Call::fflush, 0, 1, ENOSPC);
    EXPECT_EQ(sys::fflush(file), EOF);
    EXPECT_EQ(sys::fclose(file), 0);
    EXPECT_EQ(directory_.read("file"), "abcdabcefg");
    std::FILE *device = sys::fopen("/dev/full", "w");
    ASSERT_NE(device, nullptr);
    EXPECT_EQ(sys::fputs("lost", device) < 0, false);
    EXPECT_EQ(sys::fclose(device), EOF);
    EXPECT_EQ(errno, ENOSPC);
}

TEST_F(SystemTest, FailedReopenLosesNeitherMemoryNorDescriptor) {
    for (const char *mode : {"w", "", "no mode is as long as this"}) {
        std::FILE *file = sys::fopen(path("file").c_str(), "w");
        ASSERT_NE(file, nullptr);
        EXPECT_EQ(sys::freopen(path("no/such").c_str(), mode, file), nullptr) << mode;
        EXPECT_EQ(errno, *mode == 'w' ? ENOENT : EINVAL) << mode;
    }
    Fault fault(Call::freopen, 0, 1, EMFILE);
    EXPECT_EQ(sys::freopen(path("file").c_str(), "w", sys::fopen(path("file").c_str(), "w")), nullptr);
    EXPECT_EQ(errno, EMFILE);
}

TEST_F(SystemTest, LinesCountEmbeddedNulsAndSurviveASignal) {
    directory_.write("file", "a\0b\n0123456789\nend"s);
    std::FILE *file = sys::fopen(path("file").c_str(), "r");
    ASSERT_NE(file, nullptr);
    char line[8];
    for (const std::string &expected : {"a\0b\n"s, "0123456"s, "789\n"s, "end"s, ""s})
        EXPECT_EQ(std::string(line, sys::readLine(line, sizeof line, file)), expected);
    EXPECT_TRUE(sys::feof(file) && errno == 0);
    sys::fclose(file);

    const Pipe ends;
    std::FILE *reader = sys::fdopen(sys::dup(ends.ends[0]), "r");
    ASSERT_EQ(sys::writeAll(ends.ends[1], "ab", 2), 0);
    wakeUpDescriptor = ends.ends[1];
    const Alarm alarm(/*milliseconds=*/20, [](int) { sys::writeAll(wakeUpDescriptor, "c\n", 2); });
    EXPECT_STREQ(sys::fgets(line, sizeof line, reader), "abc\n");
    EXPECT_EQ(sys::fread(line, 1, 3, reader), 3u); // more than one signal brings
    EXPECT_EQ(std::string(line, 3), "c\nc");
    sys::fclose(reader);
}

TEST_F(SystemTest, AllocationFailuresKeepTheOldBlock) {
    auto *block = static_cast<char *>(sys::allocateZeroed(2, 3));
    ASSERT_NE(block, nullptr);
    std::strcpy(block, "keep");
    {
        Fault fault(Call::reallocate, 0, 1, ENOMEM);
        EXPECT_EQ(sys::reallocate(block, 100), nullptr);
        EXPECT_STREQ(block, "keep");
    }
    block = static_cast<char *>(sys::reallocate(block, 0));
    ASSERT_NE(block, nullptr);
    errno = EDOM;
    sys::release(block);
    EXPECT_EQ(errno, EDOM);
    EXPECT_GT(sys::dataSegmentEnd(), 0);
}

TEST_F(SystemTest, WaitingEndsAtItsDeadlineDespiteSignals) {
    const std::int64_t start = sys::monotonicNanoseconds();
    const Pipe ends;
    pollfd waiting{ends.ends[0], POLLIN, 0};
    {
        const Alarm alarm(/*milliseconds=*/10, [](int) {});
        EXPECT_EQ(sys::poll(&waiting, 1, 40), 0);
    }
    EXPECT_GE(sys::monotonicNanoseconds() - start, 40'000'000);
    {
        const Alarm alarm(/*milliseconds=*/10, [](int) {});
        EXPECT_EQ(sys::poll(&waiting, 1, 10'000, sys::OnSignal::report), -1);
        EXPECT_EQ(errno, EINTR);
    }
    const std::int64_t middle = sys::monotonicNanoseconds();
    {
        const Alarm alarm(/*milliseconds=*/10, [](int) {});
        EXPECT_EQ(sys::sleep(40'000'000), 0);
    }
    EXPECT_GE(sys::monotonicNanoseconds() - middle, 40'000'000);
    EXPECT_EQ(sys::Deadline::never().remainingMilliseconds(), -1);
    EXPECT_EQ(sys::Deadline::afterMilliseconds(INT64_MAX).remainingMilliseconds(), -1);
    EXPECT_TRUE(sys::Deadline::afterMilliseconds(-1).hasPassed());
    EXPECT_EQ(sys::Deadline::afterMilliseconds(INT64_MAX / 1'000'000).hasPassed(), false);
    EXPECT_LE(sys::Deadline::afterMilliseconds(500).remainingMilliseconds(), 500);
}

TEST_F(SystemTest, SocketsConnectThroughASignalAndNeverRaiseSigpipe) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto *anyAddress = reinterpret_cast<sockaddr *>(&address);
    socklen_t length = sizeof address;
    const int listener = sys::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(sys::bind(listener, anyAddress, length), 0);
    ASSERT_EQ(sys::getsockname(listener, anyAddress, &length), 0);
    const int refused = sys::socket(AF_INET, SOCK_STREAM, 0);
    Fault signal(Call::connect, 0, 2, EINTR);
    EXPECT_EQ(sys::connect(refused, anyAddress, length), -1); // nobody listens yet
    EXPECT_EQ(errno, ECONNREFUSED);
    ASSERT_EQ(sys::listen(listener, 1), 0);
    const int client = sys::socket(AF_INET, SOCK_STREAM, 0);
    ASSERT_EQ(sys::connect(client, anyAddress, length), 0);
    const int server = sys::accept(listener, nullptr, nullptr);
    EXPECT_TRUE(isCloseOnExec(server));
    EXPECT_EQ(sys::send(client, "abc", 3), 3);
    char buffer[8];
    {
        Fault storm(Call::recv, 0, 2, EINTR);
        EXPECT_EQ(sys::recv(server, buffer, sizeof buffer, MSG_PEEK), 3);
        Fault once(Call::recv, 0, 1, EINTR);
        EXPECT_EQ(sys::recv(server, buffer, sizeof buffer, 0, sys::OnSignal::report), -1);
        EXPECT_EQ(errno, EINTR);
    }
    ASSERT_EQ(sys::shutdown(client, SHUT_WR), 0);
    EXPECT_EQ(sys::send(client, "d", 1), -1);
    EXPECT_EQ(errno, EPIPE);
    for (const int descriptor : {listener, refused, client, server})
        sys::close(descriptor);
}

TEST_F(SystemTest, ResultsOfOtherShapesFailInTheirOwnWay) {
    glob_t matches;
    EXPECT_EQ(sys::glob(path("*").c_str(), GLOB_NOSORT, &matches), GLOB_NOMATCH);
    sys::globfree(&matches);
    for (const auto &[error, result] : {std::pair(ENOMEM, GLOB_NOSPACE), std::pair(EIO, GLOB_ABORTED)}) {
        Fault fault(Call::glob, 0, 1, error);
        EXPECT_EQ(sys::glob(path("*").c_str(), GLOB_NOSORT, &matches), result);
        sys::globfree(&matches);
    }
    Fault faults[] = {
        {Call::iconv_open, 0, 1, EINVAL}, {Call::dlopen, 0, 1, ENOENT}, {Call::getaddrinfo, 0, 1, EMFILE}};
    EXPECT_EQ(sys::iconv_open("UTF-8", "UTF-8"), reinterpret_cast<iconv_t>(-1));
    EXPECT_EQ(sys::dlopen(nullptr, RTLD_NOW), nullptr);
    EXPECT_STREQ(sys::dlerror(), std::strerror(ENOENT));
    addrinfo *list = nullptr;
    EXPECT_EQ(sys::getaddrinfo("127.0.0.1", nullptr, nullptr, &list), EAI_SYSTEM);
    EXPECT_EQ(errno, EMFILE);
    sys::freeaddrinfo(list);
    EXPECT_EQ(sys::dlopen("/no/such/library.so", RTLD_NOW), nullptr);
    EXPECT_NE(std::strstr(sys::dlerror(), "/no/such/library.so"), nullptr);
}
