// Starting programs from small and from large processes, and reading what they write.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSPipe.h>
#include <QBFoundation/OSAdaptor/OSPipeInputStream.h>
#include <QBFoundation/OSAdaptor/OSProcess.h>
#include <QBFoundation/QBStringOutputStream.h>

#include <benchmark/benchmark.h>

#include <cstring>
#include <string>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#if QB_HAVE_GLIB
#include <glib.h>
#endif
#if QB_HAVE_QT
#include <QCoreApplication>
#include <QProcess>
#endif

namespace {

constexpr const char *kProgram = "/bin/true";

/// So many MiB in small pages, all of them touched, as long as it lives.
class Ballast {
public:
    explicit Ballast(std::int64_t megabytes) : size_(static_cast<std::size_t>(megabytes) << 20) {
        if (size_ == 0)
            return;
        memory_ = ::mmap(nullptr, size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        ::madvise(memory_, size_, MADV_NOHUGEPAGE);
        std::memset(memory_, 1, size_);
    }
    ~Ballast() {
        if (size_ != 0)
            ::munmap(memory_, size_);
    }
    Ballast(const Ballast &) = delete;
    Ballast &operator=(const Ballast &) = delete;

private:
    std::size_t size_;
    void *memory_ = nullptr;
};

template <void (*Run)()>
void start(benchmark::State &state) {
    const Ballast ballast(state.range(0));
    const NSAutoreleasePool pool;
    for (auto _ : state)
        Run();
}

#define QB_PROCESS_BENCHMARK(run, name)                                                                      \
    BENCHMARK(start<run>)->Name(name)->Arg(0)->Arg(1024)->UseRealTime()->Unit(benchmark::kMicrosecond)

void runOurs() {
    const NSAutoreleasePool pool;
    const Ref<OSProcess> process =
        OSProcess::initWithCommand(NSString::stringWithCString(kProgram), nullptr, nullptr);
    process->waitForProcessDoHang(/*doHang=*/YES);
}
QB_PROCESS_BENCHMARK(runOurs, "Process/start/ours");

void runVfork() {
    char *const arguments[] = {const_cast<char *>(kProgram), nullptr};
    const pid_t child = ::vfork();
    if (child == 0) {
        ::execvp(kProgram, arguments);
        ::_exit(127);
    }
    ::waitpid(child, nullptr, 0);
}
QB_PROCESS_BENCHMARK(runVfork, "Process/start/vfork");
QB_PROCESS_BENCHMARK(runOurs, "Process/startBesideLibraries/ours");

#if QB_HAVE_GLIB
void runGlib() {
    char *arguments[] = {const_cast<char *>(kProgram), nullptr};
    constexpr auto kFastest = static_cast<GSpawnFlags>(
        G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_LEAVE_DESCRIPTORS_OPEN | G_SPAWN_CHILD_INHERITS_STDIN);
    GPid child = 0;
    g_spawn_async(nullptr, arguments, nullptr, kFastest, nullptr, nullptr, &child, nullptr);
    ::waitpid(child, nullptr, 0);
    g_spawn_close_pid(child);
}
QB_PROCESS_BENCHMARK(runGlib, "Process/startBesideLibraries/GLib");
#endif

#if QB_HAVE_QT
void runQt() {
    static int count = 1;
    static char name[] = "bench";
    static char *arguments[] = {name, nullptr};
    static const QCoreApplication application(count, arguments);
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.setInputChannelMode(QProcess::ForwardedInputChannel);
    process.start(kProgram, QStringList());
    process.waitForFinished(-1);
}
QB_PROCESS_BENCHMARK(runQt, "Process/startBesideLibraries/Qt");
#endif

// What `head` writes of zeros, so many bytes.

NSArray *argumentsForOurs(std::int64_t bytes) {
    return NSArray::arrayWith({"-c"_ns, NSString::stringWith(std::to_string(bytes)), "/dev/zero"_ns});
}

void captureOurs(benchmark::State &state) {
    const NSAutoreleasePool outerPool;
    char block[65536];
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        const Ref<OSPipe> pipe = OSPipe::init();
        const std::int32_t output = pipe->writeHandle();
        const Ref<OSProcess> process = OSProcess::initWithCommand("head"_ns, argumentsForOurs(state.range(0)),
                                                                  nullptr, nullptr, &output, nullptr);
        pipe->closeWriteHandle();
        const Ref<OSPipeInputStream> source = OSPipeInputStream::initWithPipe(pipe);
        const Ref<QBStringOutputStream> text = QBStringOutputStream::init();
        std::int32_t count;
        while ((count = source->readBuffer(block, sizeof block)) > 0)
            text->writeBuffer(block, static_cast<std::uint32_t>(count));
        process->waitForProcessDoHang(/*doHang=*/YES);
        if (text->targetString()->cStringLength() != state.range(0)) // characters are not counted by the peer
            state.SkipWithError("the output is not whole");
    }
}
BENCHMARK(captureOurs)->Name("Process/capture/ours")->Arg(10)->Arg(1 << 20)->UseRealTime();

#if QB_HAVE_GLIB
void captureGlib(benchmark::State &state) {
    const std::string bytes = std::to_string(state.range(0));
    char *arguments[] = {const_cast<char *>("head"), const_cast<char *>("-c"),
                         const_cast<char *>(bytes.c_str()), const_cast<char *>("/dev/zero"), nullptr};
    constexpr auto kFastest = static_cast<GSpawnFlags>(G_SPAWN_SEARCH_PATH | G_SPAWN_LEAVE_DESCRIPTORS_OPEN |
                                                       G_SPAWN_CHILD_INHERITS_STDIN);
    for (auto _ : state) {
        char *output = nullptr;
        g_spawn_sync(nullptr, arguments, nullptr, kFastest, nullptr, nullptr, &output, nullptr, nullptr,
                     nullptr);
        benchmark::DoNotOptimize(output);
        g_free(output);
    }
}
BENCHMARK(captureGlib)->Name("Process/capture/GLib")->Arg(10)->Arg(1 << 20)->UseRealTime();
#endif

} // namespace
