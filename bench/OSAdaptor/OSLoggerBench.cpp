// One log line, from the call until it is in the file, and traces that nobody wants.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/OSAdaptor/OSDebugPrinter.h>
#include <QBFoundation/OSAdaptor/OSLogger.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <unistd.h>

#if QB_HAVE_SPDLOG
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>
#endif

namespace {

// In memory, where that is to be had, so that no disk is measured.
std::string logFile(const char *name) {
    namespace fs = std::filesystem;
    const fs::path directory = fs::is_directory("/dev/shm") ? "/dev/shm" : fs::temp_directory_path();
    return directory / (std::string("qb-log-") + name + std::to_string(::getpid()));
}

void logLine(benchmark::State &state) {
    const NSAutoreleasePool pool;
    const std::string file = logFile("ours");
    OSLogger::disableDuplicateLogToStderr();
    const Ref<OSLogger> logger =
        OSLogger::initWithCategory("request"_ns, /*logLevel=*/0, "web"_ns, NSString::stringWith(file));
    int number = 0;
    for (auto _ : state)
        logger->logWithLevelFormat(0, "request %d of %s took %d ms"_ns, ++number, "a client", 17);
    std::filesystem::remove(file);
}
BENCHMARK(logLine)->Name("Log/line/ours");

#if QB_HAVE_SPDLOG
void logLineSpdlog(benchmark::State &state) {
    const std::string file = logFile("theirs");
    {
        auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>(file);
        spdlog::logger logger("web request", sink);
        logger.set_pattern("[%Y-%m-%d %H:%M:%S] (%P) [%n] %v");
        logger.flush_on(spdlog::level::info);
        int number = 0;
        for (auto _ : state)
            logger.info("request {} of {} took {} ms", ++number, "a client", 17);
    }
    std::filesystem::remove(file);
}
BENCHMARK(logLineSpdlog)->Name("Log/line/spdlog");
#endif

void silentTrace(benchmark::State &state) {
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++number);
        debug_printf(DEBUG_CHANNEL_MISC, "%s:%d number %d", "src/A", 12, number);
    }
}
BENCHMARK(silentTrace)->Name("Trace/silent/ours");

void silentTraceWithPlace(benchmark::State &state) {
    int number = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(++number);
        qb::trace(DEBUG_CHANNEL_MISC, {"src/A", 12, &OSLogger::cls, "a:"}, "number %d", number);
    }
}
BENCHMARK(silentTraceWithPlace)->Name("Trace/silentWithPlace/ours");

} // namespace
