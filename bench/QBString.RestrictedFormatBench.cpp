// Restricted formats with texts and integers, against printf into a buffer of the caller's.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <cstdio>
#include <string>

namespace {

// What is formatted: kept from the compiler, which would work some of it out.
struct Values {
    const char *name = "index.html";
    const char *directory = "handbook/pages";
    int number = 4711;
    int small = 17;

    Values() { benchmark::DoNotOptimize(this); }
};

template <class... V>
void formatOurs(benchmark::State &state, const char *format, const V &...values) {
    const NSAutoreleasePool outerPool;
    NSString *const string = NSString::stringWithCString(format);
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(NSString::stringWithRestrictedFormat(string, values...));
    }
}

template <class... V>
void formatWithPrintf(benchmark::State &state, const char *format, const V &...values) {
    char buffer[256];
    for (auto _ : state) {
        benchmark::DoNotOptimize(std::snprintf(buffer, sizeof buffer, format, values...));
        benchmark::ClobberMemory();
    }
}

template <class... V>
void addRow(const std::string &row, const char *format, const V &...values) {
    benchmark::RegisterBenchmark(
        ("Format/" + row + "/ours").c_str(),
        [format, values...](benchmark::State &state) { formatOurs(state, format, values...); });
    benchmark::RegisterBenchmark(
        ("Format/" + row + "/snprintf").c_str(),
        [format, values...](benchmark::State &state) { formatWithPrintf(state, format, values...); });
}

const bool isRegistered = [] {
    const Values v;
    addRow("text-and-integer", "%s: %d", v.name, v.number);
    addRow("message", "request %d of %s took %d ms", v.number, v.name, v.small);
    addRow("address", "%s/%s?page=%u&size=%d", v.directory, v.name, v.small, v.number);
    addRow("columns", "row %5d of %-12s|%08x", v.small, v.name, v.number);
    return true;
}();

} // namespace
