// Cached patterns against the C library's matcher alone.
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/QBRegularExpression.h>

#include <benchmark/benchmark.h>

#include <regex.h>

namespace {

constexpr const char *kIsoPattern = "^[0-9]{14}$";
constexpr const char *kIsoText = "20041231235959";

void matchExpression(benchmark::State &state) {
    const NSAutoreleasePool pool;
    NSString *const text = NSString::stringWithCString(kIsoText);
    const Ref<QBRegularExpression> expression =
        QBRegularExpression::initWithPattern(NSString::stringWithCString(kIsoPattern), 0);
    for (auto _ : state)
        benchmark::DoNotOptimize(expression->matches(text));
}

void matchString(benchmark::State &state) {
    const NSAutoreleasePool pool;
    NSString *const text = NSString::stringWithCString(kIsoText);
    NSString *const pattern = NSString::stringWithCString(kIsoPattern);
    for (auto _ : state)
        benchmark::DoNotOptimize(text->matches(pattern));
}

void matchIso(benchmark::State &state) {
    const NSAutoreleasePool pool;
    NSString *const text = NSString::stringWithCString(kIsoText);
    for (auto _ : state)
        benchmark::DoNotOptimize(text->isIsoDateTimeString());
}

void matchRegexec(benchmark::State &state) {
    regex_t expression;
    if (regcomp(&expression, kIsoPattern, REG_EXTENDED) != 0)
        return;
    for (auto _ : state)
        benchmark::DoNotOptimize(regexec(&expression, kIsoText, 0, nullptr, 0));
    regfree(&expression);
}

BENCHMARK(matchExpression)->Name("Matching/expression/ours");
BENCHMARK(matchRegexec)->Name("Matching/expression/regexec");
BENCHMARK(matchString)->Name("Matching/string/ours");
BENCHMARK(matchRegexec)->Name("Matching/string/regexec");
BENCHMARK(matchIso)->Name("Matching/ISO/ours");
BENCHMARK(matchRegexec)->Name("Matching/ISO/regexec");

} // namespace
