// Dates from texts and to texts, against the C library.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSCalendarDate.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>

namespace {

constexpr std::size_t kDates = 64;
constexpr std::int64_t kFirst = 784111777; // 6 November 1994
constexpr std::int64_t kStep = 100'003;    // somewhat more than a day

/// Makes each date's text in the format, as both sides are to read or write it.
std::array<std::string, kDates> textsOf(const char *format) {
    std::array<std::string, kDates> texts;
    for (std::size_t i = 0; i < kDates; ++i) {
        const auto seconds = static_cast<std::time_t>(kFirst + kStep * static_cast<std::int64_t>(i));
        char text[64];
        std::tm parts;
        texts[i] = {text, std::strftime(text, sizeof text, format, gmtime_r(&seconds, &parts))};
    }
    return texts;
}

/// Measures one date after the other.
template <class Work>
void measure(benchmark::State &state, Work work) {
    std::size_t next = 0;
    for (auto _ : state) {
        work(next);
        next = (next + 1) % kDates;
    }
}

/// As above, with a pool for each round of dates, as a program that goes through many would have.
template <class Work>
void measureInPools(benchmark::State &state, Work work) {
    std::optional<NSAutoreleasePool> pool;
    measure(state, [&](std::size_t i) {
        if (i == 0)
            pool.emplace();
        work(i);
    });
}

template <class Result>
void parseOurs(benchmark::State &state, const char *format, Result (NSString::*parse)() const) {
    const NSAutoreleasePool pool;
    std::array<NSString *, kDates> texts;
    const std::array<std::string, kDates> bytes = textsOf(format);
    for (std::size_t i = 0; i < kDates; ++i)
        texts[i] = NSString::stringWith(bytes[i]);
    measureInPools(state, [&](std::size_t i) { benchmark::DoNotOptimize((texts[i]->*parse)()); });
}

void parseC(benchmark::State &state, const char *format) {
    const std::array<std::string, kDates> texts = textsOf(format);
    measure(state, [&](std::size_t i) {
        std::tm parts{};
        benchmark::DoNotOptimize(strptime(texts[i].c_str(), format, &parts));
        benchmark::DoNotOptimize(timegm(&parts));
    });
}

template <class Work>
void formatOurs(benchmark::State &state, Work work) {
    const NSAutoreleasePool pool;
    std::array<NSCalendarDate *, kDates> dates;
    for (std::size_t i = 0; i < kDates; ++i)
        dates[i] = NSCalendarDate::dateWithCTime(
            static_cast<std::int32_t>(kFirst + kStep * static_cast<std::int64_t>(i)));
    measureInPools(state, [&](std::size_t i) { benchmark::DoNotOptimize(work(dates[i])); });
}

void formatC(benchmark::State &state, const char *format, std::tm *(*split)(const std::time_t *, std::tm *)) {
    measure(state, [&](std::size_t i) {
        const auto seconds = static_cast<std::time_t>(kFirst + kStep * static_cast<std::int64_t>(i));
        std::tm parts;
        char text[64];
        benchmark::DoNotOptimize(std::strftime(text, sizeof text, format, split(&seconds, &parts)));
        benchmark::DoNotOptimize(text);
    });
}

constexpr const char *kIso = "%Y%m%d%H%M%S";
constexpr const char *kHttp = "%a, %d %b %Y %H:%M:%S GMT";

void setLocalZone() {
    setenv("TZ", "Europe/Berlin", 1);
    tzset();
}

void readIsoOurs(benchmark::State &state) {
    parseOurs(state, kIso, &NSString::asDateFromISODateTimeString);
}
void readHttpOurs(benchmark::State &state) {
    parseOurs(state, kHttp, &NSString::ctimeFromHTTPDate);
}
void writeIsoOurs(benchmark::State &state) {
    formatOurs(state, [](NSCalendarDate *date) { return date->asISODateTimeString(); });
}
void writeHttpOurs(benchmark::State &state) {
    NSTimeZone *const gmt = NSTimeZone::gmt();
    formatOurs(state, [gmt](NSCalendarDate *date) {
        return date->descriptionWithCalendarFormat("%a, %d %b %Y %H:%M:%S GMT"_ns, gmt, nullptr);
    });
}
void writeLocalOurs(benchmark::State &state) {
    setLocalZone();
    formatOurs(state, [](NSCalendarDate *date) { return date->stringValue(); });
}
void writeLocalC(benchmark::State &state) {
    setLocalZone();
    formatC(state, "%d.%m.%Y %H:%M", &localtime_r);
}

BENCHMARK(readIsoOurs)->Name("DateParsing/ISO/ours");
BENCHMARK_CAPTURE(parseC, iso, kIso)->Name("DateParsing/ISO/strptime+timegm");
BENCHMARK(readHttpOurs)->Name("DateParsing/HTTP/ours");
BENCHMARK_CAPTURE(parseC, http, kHttp)->Name("DateParsing/HTTP/strptime+timegm");
BENCHMARK(writeIsoOurs)->Name("DateFormatting/ISO/ours");
BENCHMARK_CAPTURE(formatC, iso, kIso, &gmtime_r)->Name("DateFormatting/ISO/strftime");
BENCHMARK(writeHttpOurs)->Name("DateFormatting/HTTP/ours");
BENCHMARK_CAPTURE(formatC, http, kHttp, &gmtime_r)->Name("DateFormatting/HTTP/strftime");
BENCHMARK(writeLocalOurs)->Name("DateFormatting/local/ours");
BENCHMARK(writeLocalC)->Name("DateFormatting/local/strftime");

} // namespace
