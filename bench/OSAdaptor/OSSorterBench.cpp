// 100 000 strings in the order of German, and how others get it.
#include <QBFoundation/Foundation/NSArray.h>
#include <QBFoundation/Foundation/NSAutoreleasePool.h>
#include <QBFoundation/Foundation/NSString.h>
#include <QBFoundation/OSAdaptor/OSSorter.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <clocale>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#if QB_HAVE_ICU
#include <unicode/coll.h>
#include <unicode/unistr.h>
#endif
#if QB_HAVE_QT
#include <QCollator>
#include <QLocale>
#include <QString>
#endif

namespace {

constexpr std::size_t kCount = 100'000;

using Texts = std::vector<std::string>;

class Random {
public:
    std::size_t below(std::size_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::size_t>(state_ >> 33) % limit;
    }

private:
    std::uint64_t state_ = 1;
};

// Words that mean nothing, of 3 to 14 letters.
Texts words() {
    Random random;
    Texts texts(kCount);
    for (std::string &text : texts)
        for (std::size_t left = 3 + random.below(12); left != 0; --left)
            text += static_cast<char>('a' + random.below(26));
    return texts;
}

// Words of syllables, half of them capitalised, many with a letter of German. They often begin alike.
Texts german() {
    static const char *const kSyllables[] = {"ver", "sich", "er",   "ung", "haus", "tür",  "be",
                                             "ge",  "stra", "ße",   "en",  "land", "lich", "auf",
                                             "zu",  "heit", "bahn", "wör", "ter",  "buch"};
    Random random;
    Texts texts(kCount);
    for (std::string &text : texts) {
        for (std::size_t left = 3 + random.below(4); left != 0; --left)
            text += kSyllables[random.below(std::size(kSyllables))];
        if (text[0] > 0 && random.below(2) == 0)
            text[0] = static_cast<char>(text[0] - 'a' + 'A');
    }
    return texts;
}

// A vocabulary of 5000 words, each of which stands there some twenty times.
Texts repeated() {
    const Texts vocabulary = german();
    Random random;
    Texts texts(kCount);
    for (std::string &text : texts)
        text = vocabulary[random.below(5000)];
    return texts;
}

// "Section 17.4 of volume 3".
Texts titles() {
    Random random;
    Texts texts(kCount);
    for (std::string &text : texts)
        text = "Section " + std::to_string(random.below(1000)) + "." + std::to_string(random.below(100)) +
               " of volume " + std::to_string(random.below(40));
    return texts;
}

using Measure = void (*)(benchmark::State &, const Texts &);

// Returns the numbers of the keys in their order.
template <class Key>
std::vector<std::uint32_t> order(const std::vector<Key> &keys) {
    std::vector<std::uint32_t> numbers(keys.size());
    std::iota(numbers.begin(), numbers.end(), 0U);
    std::sort(numbers.begin(), numbers.end(),
              [&](std::uint32_t a, std::uint32_t b) { return keys[a] < keys[b]; });
    return numbers;
}

void sortOurs(benchmark::State &state, const Texts &texts) {
    const NSAutoreleasePool outerPool;
    NSMutableArray *const array = NSMutableArray::arrayWithCapacity(kCount);
    for (const std::string &text : texts)
        array->addObject(NSString::stringWith(text));
    OSSorter *const sorter = OSSorter::sorterForLanguage("de_DE"_ns);
    for (auto _ : state) {
        const NSAutoreleasePool pool;
        benchmark::DoNotOptimize(sorter->sortArrayAscending(array));
    }
}

void sortStrxfrm(benchmark::State &state, const Texts &texts) {
    std::setlocale(LC_COLLATE, "de_DE.utf-8");
    for (auto _ : state) {
        std::vector<std::string> keys;
        keys.reserve(texts.size());
        std::vector<char> buffer(4096);
        for (const std::string &text : texts)
            keys.emplace_back(buffer.data(), std::strxfrm(buffer.data(), text.c_str(), buffer.size()));
        benchmark::DoNotOptimize(order(keys));
    }
    std::setlocale(LC_COLLATE, "");
}

#if QB_HAVE_ICU
void sortIcu(benchmark::State &state, const Texts &texts) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::Collator> collator(
        icu::Collator::createInstance(icu::Locale("de", "DE"), status));
    std::vector<icu::UnicodeString> strings;
    for (const std::string &text : texts)
        strings.push_back(icu::UnicodeString::fromUTF8(text));
    for (auto _ : state) {
        std::vector<std::string> keys;
        keys.reserve(texts.size());
        std::uint8_t buffer[4096];
        for (const icu::UnicodeString &string : strings)
            keys.emplace_back(reinterpret_cast<const char *>(buffer),
                              static_cast<std::size_t>(collator->getSortKey(string, buffer, sizeof buffer)));
        benchmark::DoNotOptimize(order(keys));
    }
}
#endif

#if QB_HAVE_QT
void sortQt(benchmark::State &state, const Texts &texts) {
    const QCollator collator{QLocale(QLocale::German, QLocale::Germany)};
    std::vector<QString> strings;
    for (const std::string &text : texts)
        strings.push_back(QString::fromStdString(text));
    for (auto _ : state) {
        std::vector<QCollatorSortKey> keys;
        keys.reserve(strings.size());
        for (const QString &string : strings)
            keys.push_back(collator.sortKey(string));
        benchmark::DoNotOptimize(order(keys));
    }
}
#endif

const std::pair<const char *, Measure> kPeers[] = {
    {"ours", sortOurs},
    {"strxfrm", sortStrxfrm},
#if QB_HAVE_ICU
    {"ICU", sortIcu},
#endif
#if QB_HAVE_QT
    {"Qt", sortQt},
#endif
};

// Without the locale the words would be sorted by their bytes, which is another job.
const bool isRegistered = [] {
    if (!std::setlocale(LC_COLLATE, "de_DE.utf-8"))
        return std::fputs("Benchmarks without Sort: there is no locale de_DE.UTF-8\n", stderr) > 0;
    std::setlocale(LC_COLLATE, "");
    for (const auto &[row, make] :
         {std::pair("words", &words), {"german", &german}, {"titles", &titles}, {"repeated", &repeated}})
        for (const auto &[peer, measure] : kPeers)
            benchmark::RegisterBenchmark(
                (std::string("Sort/") + row + "/" + peer).c_str(),
                [texts = make(), measure = measure](benchmark::State &state) { measure(state, texts); })
                ->Unit(benchmark::kMillisecond);
    return true;
}();

} // namespace
