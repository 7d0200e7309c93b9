// Sorting of 100 000 strings: short random ones, and ones that begin alike.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#if QB_HAVE_GLIB
#include <glib.h>
#endif
#if QB_HAVE_QT
#include <QString>
#include <QStringList>
#endif

namespace {

constexpr std::size_t kCount = 100'000;

std::vector<std::string> makeTexts(const char *prefix) {
    std::mt19937 generator(42); // NOLINT(cert-msc51-cpp): the same on every run
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kCount; ++i) {
        std::string text = prefix;
        for (std::size_t length = 6 + generator() % 10; length != 0; --length)
            text += static_cast<char>('a' + generator() % 26);
        texts.push_back(text);
    }
    return texts;
}

constexpr const char *kPrefixes[] = {"", "/usr/share/doc/packages/"};

// Sorts a fresh copy of `values` each time; the copying is not measured.
template <class Copy, class Sort>
void sortCopies(benchmark::State &state, Copy copy, Sort sort) {
    for (auto _ : state) {
        state.PauseTiming();
        auto values = copy();
        state.ResumeTiming();
        sort(values);
        state.PauseTiming();
        values = {};
        state.ResumeTiming();
    }
}

void sortOurs(benchmark::State &state) {
    const NSAutoreleasePool pool;
    const Ref<NSMutableArray> strings = NSMutableArray::init();
    for (const std::string &text : makeTexts(kPrefixes[state.range(0)]))
        strings->addObject(NSString::initWith(text).get());
    sortCopies(
        state, [&] { return strings->mutableCopy(); },
        [](const Ref<NSMutableArray> &array) { array->sortUsingSelector("compare:"_sel); });
}

void sortStandard(benchmark::State &state) {
    const auto texts = makeTexts(kPrefixes[state.range(0)]);
    sortCopies(
        state, [&] { return texts; }, [](auto &copy) { std::sort(copy.begin(), copy.end()); });
}

#if QB_HAVE_GLIB
void sortGlib(benchmark::State &state) {
    const auto texts = makeTexts(kPrefixes[state.range(0)]);
    std::vector<const char *> pointers;
    for (const std::string &text : texts)
        pointers.push_back(text.c_str());
    const auto compare = [](const void *a, const void *b, void *) {
        return g_strcmp0(*static_cast<const char *const *>(a), *static_cast<const char *const *>(b));
    };
    sortCopies(
        state, [&] { return pointers; },
        [&](auto &copy) { g_qsort_with_data(copy.data(), kCount, sizeof(char *), compare, nullptr); });
}
BENCHMARK(sortGlib)->Name("NSArray/sort/GLib")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
#endif

#if QB_HAVE_QT
void sortQt(benchmark::State &state) {
    QStringList texts;
    for (const std::string &text : makeTexts(kPrefixes[state.range(0)]))
        texts.append(QString::fromStdString(text));
    sortCopies(
        state,
        [&] {
            QStringList copy = texts;
            copy.detach();
            return copy;
        },
        [](auto &copy) { copy.sort(); });
}
BENCHMARK(sortQt)->Name("NSArray/sort/Qt")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
#endif

BENCHMARK(sortOurs)->Name("NSArray/sort/ours")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(sortStandard)->Name("NSArray/sort/std")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

} // namespace
